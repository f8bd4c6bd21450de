// SPDX-License-Identifier: Apache-2.0
// PNG of 16-bit grey by libpng; unit, scale and invalid value stand in text chunks of those names.
#include "vela_io/detail/comments.hpp"
#include "vela_io/formats/depth_formats.hpp"

#include <png.h>
#include <zlib.h>

#include <algorithm>
#include <csetjmp>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <string>
#include <vector>

namespace vela::io::detail {
namespace {

/// The most that text chunks of a file may take.
constexpr std::size_t LARGEST_CHUNK = std::size_t{1} << 20;

/// libpng reports errors by `longjmp`, which must not skip destructors. What our callbacks throw is kept here
/// and thrown again once libpng has returned.
struct Session {
    InputFile* in = nullptr;
    OutputFile* out = nullptr;
    std::optional<Failure> failure;
    /// libpng allocates whatever length a chunk claims, its own limits notwithstanding.
    std::size_t largestAllocation = LARGEST_CHUNK;

    template <class Work>
    bool attempt(Work work) {
        try {
            work();
            return true;
        } catch (const Failure& thrown) {
            failure = thrown;
        } catch (...) {
            failure = Failure{ERROR_CODE::FAILURE, "the progress function threw"};
        }
        return false;
    }
};

void failPng(png_structp png, png_const_charp text) {
    auto* const session = static_cast<Session*>(png_get_error_ptr(png));
    if (!session->failure) {
        session->attempt([&] { failFormat(std::string("not a sound PNG file: ") + text); });
    }
    png_longjmp(png, 1);
}

void* allocate(png_structp png, png_alloc_size_t size) {
    const auto* const session = static_cast<const Session*>(png_get_mem_ptr(png));
    return size <= session->largestAllocation ? std::malloc(size) : nullptr;
}

void release(png_structp /*png*/, void* memory) {
    std::free(memory);
}

void ignoreWarning(png_structp /*png*/, png_const_charp /*text*/) {}

void readBytes(png_structp png, png_bytep out, std::size_t count) {
    auto* const session = static_cast<Session*>(png_get_io_ptr(png));
    if (!session->attempt([&] { session->in->read(out, count); })) png_error(png, "");
}

void writeBytes(png_structp png, png_bytep bytes, std::size_t count) {
    auto* const session = static_cast<Session*>(png_get_io_ptr(png));
    if (!session->attempt([&] { session->out->append(bytes, count); })) png_error(png, "");
}

void flushNothing(png_structp /*png*/) {}

/// Calls functions of libpng; their failure is thrown once they are left.
template <class Calls>
void callLibpng(png_structp png, Session& session, const Calls& calls) {
    if (setjmp(png_jmpbuf(png)) == 0) {  // NOLINT(cert-err52-cpp): libpng has no other way
        calls();
        return;
    }
    throw Failure(*session.failure);
}

class PngReader {
public:
    explicit PngReader(InputFile& file) {
        session_.in = &file;
        png_ = png_create_read_struct_2(PNG_LIBPNG_VER_STRING, &session_, failPng, ignoreWarning, &session_,
                                        allocate, release);
        if (png_ != nullptr) info_ = png_create_info_struct(png_);
        if (info_ == nullptr) {
            png_destroy_read_struct(&png_, &info_, nullptr);
            throw std::bad_alloc();
        }
        png_set_read_fn(png_, &session_, readBytes);
        constexpr png_uint_32 MOST_TEXTS = 100;
        png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
        png_set_chunk_malloc_max(png_, LARGEST_CHUNK);
        png_set_chunk_cache_max(png_, MOST_TEXTS);
    }
    ~PngReader() { png_destroy_read_struct(&png_, &info_, nullptr); }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;

    DepthHeader readHeader() {
        callLibpng(png_, session_, [this] { png_read_info(png_, info_); });
        DepthHeader header;
        header.width = png_get_image_width(png_, info_);
        header.height = png_get_image_height(png_, info_);
        if (png_get_color_type(png_, info_) != PNG_COLOR_TYPE_GRAY)
            failFormat("a picture in colour is not a depth map");
        const int bits = png_get_bit_depth(png_, info_);
        header.sampleBits = bits == 16 ? 16 : 8;
        Comments comments;
        png_textp texts = nullptr;
        const int count = png_get_text(png_, info_, &texts, nullptr);
        for (int i = 0; i < count; ++i) {
            comments.take(std::string(texts[i].key) + " " + texts[i].text);
        }
        comments.describe(header);
        return header;
    }

    /// Rows of 16 bits, packed, in this machine's byte order.
    void readSamples(const DepthHeader& header, std::uint16_t* out) {
        constexpr std::size_t MOST_PIXEL_BYTES = 8;  // of rows that libpng unpacks
        session_.largestAllocation = std::max(LARGEST_CHUNK, (header.width + 64) * MOST_PIXEL_BYTES);
        callLibpng(png_, session_, [&] {
            if (header.sampleBits == 8) {
                png_set_packing(png_);  // smaller samples as they are
            } else {
                png_set_swap(png_);
            }
            const int passes = png_set_interlace_handling(png_);
            png_read_update_info(png_, info_);
            for (int pass = 0; pass < passes; ++pass) {
                for (std::size_t y = 0; y < header.height; ++y) {
                    png_read_row(png_, reinterpret_cast<png_bytep>(out + y * header.width), nullptr);
                }
            }
            png_read_end(png_, nullptr);
        });
        if (header.sampleBits == 8) widen(header, out);
    }

private:
    /// From the bytes in the first half of each row.
    static void widen(const DepthHeader& header, std::uint16_t* out) {
        for (std::size_t y = 0; y < header.height; ++y, out += header.width) {
            const auto* const bytes = reinterpret_cast<const unsigned char*>(out);
            for (std::size_t x = header.width; x-- > 0;) {
                const std::uint16_t sample = bytes[x];
                std::memcpy(out + x, &sample, sizeof sample);
            }
        }
    }

    Session session_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
};

class PngWriter {
public:
    explicit PngWriter(OutputFile& file) {
        session_.out = &file;
        png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, &session_, failPng, ignoreWarning);
        if (png_ != nullptr) info_ = png_create_info_struct(png_);
        if (info_ == nullptr) {
            png_destroy_write_struct(&png_, &info_);
            throw std::bad_alloc();
        }
        png_set_write_fn(png_, &session_, writeBytes, flushNothing);
    }
    ~PngWriter() { png_destroy_write_struct(&png_, &info_); }
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;

    void writeHeader(const DepthHeader& header, int compression) {
        std::vector<std::string> comments = commentsOf(header);
        std::vector<png_text> texts;
        for (std::string& comment : comments) {
            const std::size_t blank = comment.find(' ');
            comment[blank] = '\0';
            png_text text{};
            text.compression = PNG_TEXT_COMPRESSION_NONE;
            text.key = comment.data();
            text.text = comment.data() + blank + 1;
            texts.push_back(text);
        }
        callLibpng(png_, session_, [&] {
            // Neighbours in a row are alike: their differences are small and form runs.
            png_set_filter(png_, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB);
            png_set_compression_level(png_, compression < 0 ? Z_BEST_SPEED : compression);
            if (compression < 0) png_set_compression_strategy(png_, Z_RLE);
            png_set_IHDR(png_, info_, static_cast<png_uint_32>(header.width),
                         static_cast<png_uint_32>(header.height), 16, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE,
                         PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
            png_set_text(png_, info_, texts.data(), static_cast<int>(texts.size()));
            png_write_info(png_, info_);
        });
    }
    void writeRow(const std::uint16_t* samples) {
        callLibpng(png_, session_, [&] { png_write_row(png_, reinterpret_cast<png_const_bytep>(samples)); });
    }
    void finish() {
        callLibpng(png_, session_, [this] { png_write_end(png_, nullptr); });
    }

private:
    Session session_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
};

}  // namespace

void readPng(InputFile& file, DepthSink& sink) {
    const std::size_t bytes = file.size();
    PngReader reader(file);
    const DepthHeader header = reader.readHeader();
    constexpr std::size_t LARGEST_EXPANSION = 1040;  // of deflate, a little over its 1032
    if (header.height > bytes * LARGEST_EXPANSION * 8 / header.width) {
        failFormat("the file is too short for its " + std::to_string(header.width) + " x " +
                   std::to_string(header.height) + " pixels");
    }
    if (!sink.begin(header)) return;
    reader.readSamples(header, sink.samples());
    sink.takeSamples();
}

void writePng(OutputFile& file, const DepthHeader& header, DepthSource& source, int compression) {
    PngWriter writer(file);
    writer.writeHeader(header, compression);
    std::vector<std::uint16_t> row(header.width);
    for (std::size_t y = 0; y < header.height; ++y) {
        source.samples(y, row.data());
        for (std::uint16_t& sample : row) {
            sample = static_cast<std::uint16_t>(sample << 8 | sample >> 8);
        }
        writer.writeRow(row.data());
    }
    writer.finish();
}

}  // namespace vela::io::detail
