// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_gpu/kernels/detail/PixelView.hpp"
#include "vela_gpu/kernels/detail/device_code.hpp"
#include "vela_gpu/kernels/detail/pixel_ops.hpp"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vela::detail {

// How kernels walk an image. A row is cut into tiles, and the 32 lanes of a warp share a tile:
//
//     | lane 0 | lane 1 | ... | lane 31 | lane 0 | lane 1 | ...     words of 16 bytes
//
// so that accesses coalesce and each lane keeps several loads in flight. Three-byte and three-float pixels
// fill three words exactly and are moved in words as well. The pixels at the end of a row that fill no word,
// and rows that are not word-aligned, are processed one by one; padding is not touched. Data that an
// operation needs from memory is requested after its pixels (pixel_ops.hpp). Both flavours call these
// functors, one from threads, one from loops.

/// Unit of loads and stores of a lane.
struct alignas(16) Word {
    std::uint32_t bits[4];
};

inline constexpr unsigned WARP_LANES = 32;

/// Run: the shortest sequence of whole pixels that is a sequence of whole words. Pixels are 1, 2, 4, 8 or 16
/// bytes, or three times as many.
template <class T>
inline constexpr unsigned RUN_WORDS = sizeof(T) % 3 == 0 ? 3 : 1;
template <class T>
inline constexpr unsigned RUN_PIXELS = static_cast<unsigned>(RUN_WORDS<T> * sizeof(Word) / sizeof(T));

/// Words of a tile that one lane handles.
template <class T>
inline constexpr unsigned LANE_WORDS = RUN_WORDS<T> == 3 ? 3 : 4;
template <class T>
inline constexpr unsigned TILE_WORDS = WARP_LANES* LANE_WORDS<T>;
template <class T>
inline constexpr unsigned TILE_PIXELS = TILE_WORDS<T> / RUN_WORDS<T>* RUN_PIXELS<T>;

template <class T>
VELA_HOST_DEVICE std::size_t tilesPerRow(const PixelView<T>& rows) {
    return (rows.width - 1) / TILE_PIXELS<T> + 1;
}

template <class T>
bool liesOnWords(const PixelView<T>& rows) {
    const bool stepFits = rows.height == 1 || rows.stepBytes % sizeof(Word) == 0;
    return reinterpret_cast<std::uintptr_t>(rows.data) % sizeof(Word) == 0 && stepFits;
}

/// The part of a row that a warp handles.
template <class T>
struct Tile {
    T* pixels;
    unsigned count;
    unsigned words;  ///< words covered by whole runs; 0 if rows are not word-aligned

    VELA_HOST_DEVICE Tile(const PixelView<T>& rows, bool onWords, std::size_t index, std::size_t y) {
        const std::size_t first = index * TILE_PIXELS<T>;
        const std::size_t left = rows.width - first;
        pixels =
            reinterpret_cast<T*>(reinterpret_cast<unsigned char*>(rows.data) + y * rows.stepBytes) + first;
        count = left < TILE_PIXELS<T> ? static_cast<unsigned>(left) : TILE_PIXELS<T>;
        words = onWords ? count / RUN_PIXELS<T> * RUN_WORDS<T> : 0;
    }

    VELA_HOST_DEVICE Word& word(unsigned index) const { return reinterpret_cast<Word*>(pixels)[index]; }
    VELA_HOST_DEVICE unsigned pixelsInWords() const { return words / RUN_WORDS<T> * RUN_PIXELS<T>; }
};

/// Sets every pixel to one value.
template <class T>
struct FillTiles {
    PixelView<T> rows;
    bool onWords;
    T value;
    Word run[RUN_WORDS<T>];  ///< filled with the value

    FillTiles(const PixelView<T>& rows_, const T& value_)
        : rows(rows_.packed() ? rows_.joined() : rows_), onWords(liesOnWords(rows)), value(value_) {
        for (unsigned i = 0; i < RUN_PIXELS<T>; ++i) {
            std::memcpy(reinterpret_cast<unsigned char*>(run) + i * sizeof value, &value, sizeof value);
        }
    }

    VELA_HOST_DEVICE std::size_t tilesPerRow() const { return detail::tilesPerRow(rows); }
    VELA_HOST_DEVICE std::size_t height() const { return rows.height; }
    VELA_HOST_DEVICE void operator()(std::size_t index, std::size_t y, unsigned lane) const {
        const Tile<T> tile(rows, onWords, index, y);
        for (unsigned i = 0; i < LANE_WORDS<T>; ++i) {
            const unsigned word = lane + i * WARP_LANES;
            if (word < tile.words) tile.word(word) = run[word % RUN_WORDS<T>];
        }
        VELA_RARE_LOOP
        for (unsigned i = tile.pixelsInWords() + lane; i < tile.count; i += WARP_LANES) {
            tile.pixels[i] = value;
        }
    }
};

/// Sets every pixel of the destination to op(p), p being the pixel at the same position in the source, which
/// may be the same memory. Images and pixels of both have equal sizes.
template <class From, class To, class Op>
struct MapRows {
    PixelView<From> source;
    PixelView<To> destination;
    bool onWords;
    Op op;

    MapRows(const PixelView<From>& source_, const PixelView<To>& destination_, const Op& op_)
        : source(source_), destination(destination_), op(op_) {
        static_assert(sizeof(From) == sizeof(To));
        if (source.packed() && destination.packed()) {
            source = source.joined();
            destination = destination.joined();
        }
        onWords = liesOnWords(source) && liesOnWords(destination);
    }

    VELA_HOST_DEVICE std::size_t tilesPerRow() const { return detail::tilesPerRow(source); }
    VELA_HOST_DEVICE std::size_t height() const { return source.height; }

    /// Applies the fetched operation to the pixels of a run.
    template <class Fetched>
    VELA_HOST_DEVICE static void mapRun(const Fetched& apply, Word* run) {
        From before[RUN_PIXELS<From>];
        To after[RUN_PIXELS<To>];
        std::memcpy(static_cast<void*>(before), run, sizeof before);
        for (unsigned i = 0; i < RUN_PIXELS<To>; ++i) {
            after[i] = apply(before[i]);
        }
        std::memcpy(run, after, sizeof after);
    }

    /// Processes the pixels of a tile that fill no word.
    template <class Fetched>
    VELA_HOST_DEVICE static void mapRest(const Fetched& apply, const Tile<From>& from, const Tile<To>& to,
                                         unsigned lane) {
        VELA_RARE_LOOP
        for (unsigned i = from.pixelsInWords() + lane; i < from.count; i += WARP_LANES) {
            to.pixels[i] = apply(from.pixels[i]);
        }
    }
};

/// For pixels that never cross a word boundary: each word stays with its lane.
template <class From, class To, class Op>
struct MapTiles : MapRows<From, To, Op> {
    static_assert(RUN_WORDS<From> == 1);
    using MapRows<From, To, Op>::MapRows;

    VELA_HOST_DEVICE void operator()(std::size_t index, std::size_t y, unsigned lane) const {
        const Tile<From> from(this->source, this->onWords, index, y);
        const Tile<To> to(this->destination, this->onWords, index, y);
        Word words[LANE_WORDS<From>] = {};
        for (unsigned i = 0; i < LANE_WORDS<From>; ++i) {
            if (lane + i * WARP_LANES < from.words) words[i] = from.word(lane + i * WARP_LANES);
        }
        const auto& apply = fetched(this->op);
        for (unsigned i = 0; i < LANE_WORDS<From>; ++i) {
            if (lane + i * WARP_LANES >= from.words) continue;
            this->mapRun(apply, &words[i]);
            to.word(lane + i * WARP_LANES) = words[i];
        }
        this->mapRest(apply, from, to, lane);
    }
};
template <class From, class To, class Op>
MapTiles(const PixelView<From>&, const PixelView<To>&, const Op&) -> MapTiles<From, To, Op>;

/// For pixels that cross word boundaries: the tile's words pass through memory shared by the lanes. All lanes
/// finish one of the three steps before any of them starts the next.
template <class From, class To, class Op>
struct ExchangingMapTiles : MapRows<From, To, Op> {
    static_assert(RUN_WORDS<From> == LANE_WORDS<From>, "a lane has one run");
    using MapRows<From, To, Op>::MapRows;

    /// Returns the operation for the other two steps.
    VELA_HOST_DEVICE auto load(std::size_t index, std::size_t y, unsigned lane, Word* shared) const {
        const Tile<From> from(this->source, this->onWords, index, y);
        Word words[LANE_WORDS<From>] = {};
        for (unsigned i = 0; i < LANE_WORDS<From>; ++i) {
            if (lane + i * WARP_LANES < from.words) words[i] = from.word(lane + i * WARP_LANES);
        }
        const auto apply = fetched(this->op);
        for (unsigned i = 0; i < LANE_WORDS<From>; ++i) {
            shared[lane + i * WARP_LANES] = words[i];
        }
        return apply;
    }
    template <class Fetched>
    VELA_HOST_DEVICE void map(const Fetched& apply, unsigned lane, Word* shared) const {
        Word run[RUN_WORDS<From>];
        for (unsigned i = 0; i < RUN_WORDS<From>; ++i) {
            run[i] = shared[lane * RUN_WORDS<From> + i];
        }
        this->mapRun(apply, run);
        for (unsigned i = 0; i < RUN_WORDS<From>; ++i) {
            shared[lane * RUN_WORDS<From> + i] = run[i];
        }
    }
    template <class Fetched>
    VELA_HOST_DEVICE void store(const Fetched& apply, std::size_t index, std::size_t y, unsigned lane,
                                const Word* shared) const {
        const Tile<From> from(this->source, this->onWords, index, y);
        const Tile<To> to(this->destination, this->onWords, index, y);
        for (unsigned i = 0; i < LANE_WORDS<To>; ++i) {
            if (lane + i * WARP_LANES < to.words)
                to.word(lane + i * WARP_LANES) = shared[lane + i * WARP_LANES];
        }
        this->mapRest(apply, from, to, lane);
    }
};
template <class From, class To, class Op>
ExchangingMapTiles(const PixelView<From>&, const PixelView<To>&, const Op&)
    -> ExchangingMapTiles<From, To, Op>;

}  // namespace vela::detail
