// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <map>
#include <vector>

namespace vela::software_device {

/// The memory of the software device. A device address lies in a range that the host cannot touch; the bytes
/// behind it live elsewhere and are reached through `reach` alone. A managed address holds its own bytes.
/// Addresses are not handed out again for the next 64 GiB (less where the system refuses such a range), so
/// that a stale one is told from a live one. Not thread-safe.
class DeviceMemory {
public:
    enum class Kind { DEVICE, MANAGED };

    /// A fresh allocation filled with 0xCD; null when `bytes` is 0 or cannot be had. May throw
    /// std::bad_alloc, and then nothing has changed.
    void* allocate(std::size_t bytes, Kind kind);

    /// False when `address` is not the start of a live allocation.
    bool release(void* address);

    /// Whether the address was ever handed out, live or stale.
    bool owns(const void* address) const;

    /// The bytes behind [address, address + bytes) as this process may access them, and their kind; null
    /// unless all of them belong to one live allocation.
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
