#pragma once

#include "vela_core/types/host_device.hpp"
#include "vela_gpu/PixelView.hpp"

#include <cstddef>
#include <cstdint>

namespace vela {

// How kernels walk an image: a row is cut into runs, the shortest sequences of whole pixels that are also
// whole words of 16 bytes, and one thread handles one run. So three-byte and three-float pixels, too, travel
// in words of 16 bytes. The end of a row that fills no run, and rows that do not lie on 16 bytes, go pixel by
// pixel; padding is not touched. Both backends call these functors, one with threads and one with loops.

inline constexpr std::size_t WORD_BYTES = 16;

/// Pixels in a run: the least common multiple of pixel and word, in pixels. Pixel sizes are 1, 2, 4, 8 and 16
/// bytes, or three times one of them.
template <class T>
inline constexpr std::uint32_t RUN_PIXELS = static_cast<std::uint32_t>(sizeof(T) % 3 == 0
                                                                           ? 3 * WORD_BYTES / sizeof(T)
                                                                           : WORD_BYTES / sizeof(T));

/// The pixels of a run, loaded and stored in words.
template <class T>
struct alignas(WORD_BYTES) PixelRun {
    T pixels[RUN_PIXELS<T>];
};

template <class T>
std::uint32_t runsPerRow(const PixelView<T>& view) {
    return (view.width - 1) / RUN_PIXELS<T> + 1;
}

/// Whether all rows start on whole words.
template <class T>
bool liesOnWords(const PixelView<T>& view) {
    return reinterpret_cast<std::uintptr_t>(view.data) % WORD_BYTES == 0 && view.stepBytes % WORD_BYTES == 0;
}

/// A run of a row and how much of it there is.
template <class T>
struct RunPlace {
    T* pixels;
    std::uint32_t count;
    bool whole;  ///< it may be taken in words

    VELA_HOST_DEVICE RunPlace(const PixelView<T>& view, bool onWords, std::uint32_t run, std::uint32_t y)
        : pixels(reinterpret_cast<T*>(reinterpret_cast<unsigned char*>(view.data) + y * view.stepBytes) +
                 std::size_t{run} * RUN_PIXELS<T>),
          count(view.width - run * RUN_PIXELS<T>) {
        whole = onWords && count >= RUN_PIXELS<T>;
        if (count > RUN_PIXELS<T>) count = RUN_PIXELS<T>;
    }

    VELA_HOST_DEVICE PixelRun<T>& words() const { return *reinterpret_cast<PixelRun<T>*>(pixels); }
};

/// Sets every pixel to one value.
template <class T>
struct FillRun {
    PixelView<T> view;
    bool onWords;
    PixelRun<T> value;

    FillRun(const PixelView<T>& view_, const T& pixel) : view(view_), onWords(liesOnWords(view_)) {
        for (T& copy : value.pixels) {
            copy = pixel;
        }
    }

    VELA_HOST_DEVICE void operator()(std::uint32_t run, std::uint32_t y) const {
        const RunPlace<T> place(view, onWords, run, y);
        if (place.whole) {
            place.words() = value;
        } else {
            for (std::uint32_t i = 0; i < place.count; ++i) {
                place.pixels[i] = value.pixels[0];
            }
        }
    }
};

/// Sets every pixel of the destination to op(p) of the pixel p at its place in the source, which may be the
/// same memory. Both views have the same size, and their pixels too.
template <class From, class To, class Op>
struct MapRun {
    PixelView<From> source;
    PixelView<To> destination;
    bool onWords;
    Op op;

    MapRun(const PixelView<From>& source_, const PixelView<To>& destination_, const Op& op_)
        : source(source_),
          destination(destination_),
          onWords(liesOnWords(source_) && liesOnWords(destination_)),
          op(op_) {
        static_assert(sizeof(From) == sizeof(To));
    }

    VELA_HOST_DEVICE void operator()(std::uint32_t run, std::uint32_t y) const {
        const RunPlace<From> from(source, onWords, run, y);
        const RunPlace<To> to(destination, onWords, run, y);
        if (from.whole) {
            const PixelRun<From> in = from.words();
            PixelRun<To> out;
            for (std::uint32_t i = 0; i < RUN_PIXELS<To>; ++i) {
                out.pixels[i] = op(in.pixels[i]);
            }
            to.words() = out;
        } else {
            for (std::uint32_t i = 0; i < from.count; ++i) {
                to.pixels[i] = op(from.pixels[i]);
            }
        }
    }
};

}  // namespace vela
