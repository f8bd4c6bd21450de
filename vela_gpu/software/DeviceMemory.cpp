#include "vela_gpu/software/DeviceMemory.hpp"

#include <sys/mman.h>

#include <algorithm>
#include <cstring>

namespace vela::software_device {
namespace {

constexpr std::size_t PAGES = 65536;  // a multiple of the page size of every machine
constexpr std::size_t ARENA = std::size_t{64} << 30;
constexpr std::size_t LARGEST = std::size_t{1} << 46;
constexpr int POISON = 0xCD;

/// Fresh pages, at `address` if it is not null; null on failure.
std::byte* mapPages(std::byte* address, std::size_t size, int protection) {
    const int fixed = address == nullptr ? 0 : MAP_FIXED;
    const int reserve = protection == PROT_NONE ? MAP_NORESERVE : 0;
    void* const pages = mmap(address, size, protection, MAP_PRIVATE | MAP_ANONYMOUS | fixed | reserve, -1, 0);
    return pages == MAP_FAILED ? nullptr : static_cast<std::byte*>(pages);
}

std::size_t roundedUpToPages(std::size_t bytes) {
    return (bytes + PAGES - 1) / PAGES * PAGES;
}

}  // namespace

std::byte* DeviceMemory::takeAddresses(std::size_t size) {
    if (arenas_.empty() || arenas_.back().size - arenas_.back().used < size) {
        const auto unused = [](const Arena& arena) {
            return arena.live == 0 && munmap(arena.base, arena.size) == 0;
        };
        arenas_.erase(std::remove_if(arenas_.begin(), arenas_.end(), unused), arenas_.end());
        const std::size_t arenaSize = std::max(size, ARENA);
        std::byte* const base = mapPages(nullptr, arenaSize, PROT_NONE);
        if (base == nullptr) return nullptr;
        arenas_.push_back({base, arenaSize, 0, 0});
    }
    Arena& arena = arenas_.back();
    std::byte* const address = arena.base + arena.used;
    arena.used += size;
    return address;
}

void* DeviceMemory::allocate(std::size_t bytes, Kind kind) {
    if (bytes == 0 || bytes > LARGEST) return nullptr;
    const std::size_t size = roundedUpToPages(bytes);
    std::byte* const address = takeAddresses(size + PAGES);  // untouchable pages lie behind each allocation
    if (address == nullptr) return nullptr;
    std::byte* const pages =
        mapPages(kind == Kind::MANAGED ? address : nullptr, size, PROT_READ | PROT_WRITE);
    if (pages == nullptr) return nullptr;
    std::memset(pages, POISON, bytes);
    allocations_[address] = {pages, bytes, kind};
    ++arenas_.back().live;
    return address;
}

bool DeviceMemory::release(void* address) {
    const auto found = allocations_.find(static_cast<const std::byte*>(address));
    if (found == allocations_.end()) return false;
    const Allocation& allocation = found->second;
    const std::size_t size = roundedUpToPages(allocation.size);
    if (allocation.kind == Kind::MANAGED) {
        mapPages(allocation.bytes, size, PROT_NONE);  // the addresses stay taken
    } else {
        munmap(allocation.bytes, size);
    }
    --std::find_if(arenas_.begin(), arenas_.end(), [=](const Arena& arena) {
          return arena.contains(address);
      })->live;
    allocations_.erase(found);
    return true;
}

bool DeviceMemory::owns(const void* address) const {
    return std::any_of(arenas_.begin(), arenas_.end(),
                       [=](const Arena& arena) { return arena.contains(address); });
}

DeviceMemory::Reached DeviceMemory::reach(const void* address, std::size_t bytes) const {
    const auto* const first = static_cast<const std::byte*>(address);
    auto found = allocations_.upper_bound(first);
    if (found == allocations_.begin()) return {};
    --found;
    const Allocation& allocation = found->second;
    const auto offset = static_cast<std::size_t>(first - found->first);
    if (offset > allocation.size || bytes > allocation.size - offset) return {};
    return {allocation.bytes + offset, allocation.kind};
}

std::size_t DeviceMemory::managedSize(const void* address) const {
    const auto found = allocations_.find(static_cast<const std::byte*>(address));
    return found != allocations_.end() && found->second.kind == Kind::MANAGED ? found->second.size : 0;
}

}  // namespace vela::software_device
