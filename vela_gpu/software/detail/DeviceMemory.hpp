// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <map>
#include <vector>

namespace vela::software_device {

/// Memory of the software device. Device addresses lie in a range that the host cannot access; their bytes
/// are stored elsewhere, and only `reach` finds them. Managed addresses hold their own bytes. Addresses are
/// not reused for the next 64 GiB of allocations (fewer where the system refuses such a range), so that stale
/// pointers are detected. Not thread-safe.
class DeviceMemory {
public:
    enum class Kind { DEVICE, MANAGED };

    /// A new allocation filled with 0xCD; null if `bytes` is 0 or cannot be allocated. May throw
    /// std::bad_alloc, without a change.
    void* allocate(std::size_t bytes, Kind kind);

    /// Frees an allocation; false if `address` is not the start of a live one.
    bool release(void* address);

    /// Whether the address was ever allocated, live or stale.
    bool owns(const void* address) const;

    /// Host address and kind of the bytes at [address, address + bytes); null unless all of them belong to
    /// one live allocation.
    struct Reached {
        std::byte* bytes = nullptr;
        Kind kind = Kind::DEVICE;
    };
    Reached reach(const void* address, std::size_t bytes) const;

    /// Size of the managed allocation that starts at the address; 0 if there is none.
    std::size_t managedSize(const void* address) const;

    std::size_t liveAllocations() const { return allocations_.size(); }

private:
    struct Arena {
        std::byte* base;
        std::size_t size;
        std::size_t used;
        std::size_t live;

        bool contains(const void* address) const { return address >= base && address < base + size; }
    };
    struct Allocation {
        std::byte* bytes = nullptr;
        std::size_t size = 0;
        Kind kind = Kind::DEVICE;
    };

    bool addArena(std::size_t size);
    std::byte* takeAddresses(std::size_t size);

    std::vector<Arena> arenas_;
    std::map<const std::byte*, Allocation> allocations_;
};

}  // namespace vela::software_device
