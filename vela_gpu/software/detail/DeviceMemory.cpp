// SPDX-License-Identifier: Apache-2.0
#include "vela_gpu/software/detail/DeviceMemory.hpp"

#include <sys/mman.h>

#include <algorithm>
#include <cstring>

namespace vela::software_device {
namespace {

constexpr std::size_t PAGES = 65536;  // a multiple of the page size of every machine
/// Sizes of address ranges to try, until the system grants one: it may limit a process (`ulimit -v`, locked
/// memory). The smaller ones leave most of such a limit to the data.
constexpr std::size_t ARENAS[] = {std::size_t{64} << 30, std::size_t{1} << 30, std::size_t{64} << 20, 0};
constexpr std::size_t LARGEST = std::size_t{1} << 46;
constexpr int POISON = 0xCD;

/// Maps new pages, at `address` unless it is null; null on failure.
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

bool DeviceMemory::addArena(std::size_t size) {
    const auto unused = [](const Arena& arena) {
        return arena.live == 0 && munmap(arena.base, arena.size) == 0;
    };
    arenas_.erase(std::remove_if(arenas_.begin(), arenas_.end(), unused), arenas_.end());
    arenas_.reserve(arenas_.size() + 1);  // so that nothing throws once the range is mapped
    for (const std::size_t usual : ARENAS) {
        const std::size_t arenaSize = std::max(size, usual);
        if (std::byte* const base = mapPages(nullptr, arenaSize, PROT_NONE)) {
            arenas_.push_back({base, arenaSize, 0, 0});
            return true;
        }
    }
    return false;
}

std::byte* DeviceMemory::takeAddresses(std::size_t size) {
    const bool full = arenas_.empty() || arenas_.back().size - arenas_.back().used < size;
    if (full && !addArena(size)) return nullptr;
    Arena& arena = arenas_.back();
    std::byte* const address = arena.base + arena.used;
    arena.used += size;
    return address;
}

void* DeviceMemory::allocate(std::size_t bytes, Kind kind) {
    if (bytes == 0 || bytes > LARGEST) return nullptr;
    const std::size_t size = roundedUpToPages(bytes);
    std::byte* const address = takeAddresses(size + PAGES);  // inaccessible pages follow each allocation
    if (address == nullptr) return nullptr;
    const auto entry = allocations_.emplace(address, Allocation{}).first;  // may throw, so before the mapping
    std::byte* const pages =
        mapPages(kind == Kind::MANAGED ? address : nullptr, size, PROT_READ | PROT_WRITE);
    if (pages == nullptr) {
        allocations_.erase(entry);
        return nullptr;
    }
    std::memset(pages, POISON, bytes);
    entry->second = {pages, bytes, kind};
    ++arenas_.back().live;
    return address;
}

bool DeviceMemory::release(void* address) {
    const auto found = allocations_.find(static_cast<const std::byte*>(address));
    if (found == allocations_.end()) return false;
    const Allocation& allocation = found->second;
    const std::size_t size = roundedUpToPages(allocation.size);
    if (allocation.kind == Kind::MANAGED) {
        mapPages(allocation.bytes, size, PROT_NONE);  // the addresses stay reserved
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
