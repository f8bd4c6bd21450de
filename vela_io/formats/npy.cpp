// SPDX-License-Identifier: Apache-2.0
#include "vela_io/formats/npy.hpp"

#include "vela_io/detail/mats.hpp"
#include "vela_io/formats/depth_formats.hpp"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace vela::io {
namespace detail {
namespace {

constexpr std::string_view MAGIC("\x93NUMPY", 6);
constexpr std::size_t ALIGNMENT = 64;            // of the elements in the file, as NumPy writes them
constexpr std::size_t LONGEST_HEADER = 1 << 16;  // longer ones are refused; NumPy's own limit is 10,000

struct Element {
    MAT_TYPE type;
    char kind;
    std::size_t itemBytes;
    std::size_t channels;
};

constexpr Element ELEMENTS[] = {
    {MAT_TYPE::MAT_32F_C1, 'f', 4, 1}, {MAT_TYPE::MAT_32F_C2, 'f', 4, 2}, {MAT_TYPE::MAT_32F_C3, 'f', 4, 3},
    {MAT_TYPE::MAT_32F_C4, 'f', 4, 4}, {MAT_TYPE::MAT_8U_C1, 'u', 1, 1},  {MAT_TYPE::MAT_8U_C2, 'u', 1, 2},
    {MAT_TYPE::MAT_8U_C3, 'u', 1, 3},  {MAT_TYPE::MAT_8U_C4, 'u', 1, 4},  {MAT_TYPE::MAT_US16_C1, 'u', 2, 1},
    {MAT_TYPE::MAT_8S_C4, 'i', 1, 4},
};

const Element& elementOf(MAT_TYPE type) {
    for (const Element& element : ELEMENTS) {
        if (element.type == type) return element;
    }
    refuse("an unknown pixel type");
}

MAT_TYPE typeOf(const NpyHeader& header) {
    for (const Element& element : ELEMENTS) {
        if (element.kind == header.kind && element.itemBytes == header.itemBytes &&
            element.channels == header.channels) {
            return element.type;
        }
    }
    failFormat("no Mat has elements of '" + std::string(1, header.kind) + std::to_string(header.itemBytes) +
               "' in " + std::to_string(header.channels) + " channels");
}

/// The text behind `'key':`, without leading blanks.
std::string_view valueOf(std::string_view dictionary, std::string_view key) {
    for (const char quote : {'\'', '"'}) {
        const std::string quoted = quote + std::string(key) + quote;
        const std::size_t found = dictionary.find(quoted);
        if (found == std::string_view::npos) continue;
        std::size_t start = dictionary.find(':', found + quoted.size());
        if (start == std::string_view::npos) break;
        start = dictionary.find_first_not_of(' ', start + 1);
        if (start != std::string_view::npos) return dictionary.substr(start);
    }
    failFormat("the header has no '" + std::string(key) + "'");
}

void parseType(std::string_view text, NpyHeader& header) {
    // '<f4' in either kind of quotes; a list stands for a structured type
    const bool quoted = text.size() >= 5 && (text[0] == '\'' || text[0] == '"') && text[4] == text[0];
    if (!quoted) failFormat("elements of a type that no Mat has");
    header.swapped = text[1] == '>';
    header.kind = text[2];
    if (text[3] < '0' || text[3] > '9') failFormat("elements of a type that no Mat has");
    header.itemBytes = static_cast<std::size_t>(text[3] - '0');
}

void parseShape(std::string_view text, NpyHeader& header) {
    std::vector<std::size_t> sides;
    const std::size_t end = text.find(')');
    if (text.empty() || text[0] != '(' || end == std::string_view::npos)
        failFormat("the shape is not a tuple");
    std::size_t value = 0;
    bool digits = false;
    for (const char c : text.substr(1, end)) {
        if (c >= '0' && c <= '9') {
            value = value * 10 + static_cast<std::size_t>(c - '0');
            digits = true;
            if (value > LARGEST_SIDE) failFormat("a side of the array is too long");
        } else if (c == ',' || c == ')') {
            if (digits) sides.push_back(value);
            value = 0;
            digits = false;
        } else if (c != ' ') {
            failFormat("the shape is not a tuple of numbers");
        }
    }
    if (sides.size() != 2 && sides.size() != 3) {
        failFormat("an array of " + std::to_string(sides.size()) + " dimensions");
    }
    header.height = sides[0];
    header.width = sides[1];
    header.channels = sides.size() == 3 ? sides[2] : 1;
}

void swapBytes(unsigned char* bytes, std::size_t count, std::size_t itemBytes) {
    for (std::size_t i = 0; i < count; ++i, bytes += itemBytes) {
        std::reverse(bytes, bytes + itemBytes);
    }
}

/// Transposes an array from Fortran order to C order.
void scatterFortran(InputFile& file, const NpyHeader& header, unsigned char* out) {
    const std::size_t item = header.itemBytes;
    for (std::size_t c = 0; c < header.channels; ++c) {
        for (std::size_t x = 0; x < header.width; ++x) {
            for (std::size_t y = 0; y < header.height; ++y) {
                file.read(out + ((y * header.width + x) * header.channels + c) * item, item);
            }
        }
    }
}

}  // namespace

bool isNpy(const char* begin, std::size_t count) {
    return std::string_view(begin, count).substr(0, MAGIC.size()) == MAGIC;
}

NpyHeader readNpyHeader(InputFile& file) {
    unsigned char start[12] = {};
    file.read(start, 10);
    if (!isNpy(reinterpret_cast<const char*>(start), 10)) failFormat("not a NumPy array");
    std::size_t length = start[8] | static_cast<std::size_t>(start[9]) << 8;
    if (start[6] > 1) {
        file.read(start + 10, 2);
        length |= static_cast<std::size_t>(start[10]) << 16 | static_cast<std::size_t>(start[11]) << 24;
    }
    if (start[6] < 1 || start[6] > 3 || length > LONGEST_HEADER)
        failFormat("an unknown version of the format");
    std::string dictionary(length, '\0');
    file.read(dictionary.data(), length);

    NpyHeader header;
    parseType(valueOf(dictionary, "descr"), header);
    header.fortranOrder = valueOf(dictionary, "fortran_order").substr(0, 4) == "True";
    parseShape(valueOf(dictionary, "shape"), header);
    typeOf(header);
    const std::size_t rowBytes = header.width * header.channels * header.itemBytes;
    if (rowBytes != 0 && header.height > file.left() / rowBytes) {
        failFormat("the file is too short for its " + std::to_string(header.width) + " x " +
                   std::to_string(header.height) + " pixels");
    }
    return header;
}

void readNpyElements(InputFile& file, const NpyHeader& header, unsigned char* out) {
    const std::size_t count = header.height * header.width * header.channels;
    if (header.fortranOrder) {
        scatterFortran(file, header, out);
    } else {
        file.read(out, count * header.itemBytes);
    }
    if (header.swapped) swapBytes(out, count, header.itemBytes);
}

void writeNpyHeader(OutputFile& file, const NpyHeader& header) {
    std::string text = "{'descr': '";
    text += header.itemBytes == 1 ? '|' : '<';
    text += header.kind + std::to_string(header.itemBytes) + "', 'fortran_order': False, 'shape': (" +
            std::to_string(header.height) + ", " + std::to_string(header.width);
    if (header.channels > 1) text += ", " + std::to_string(header.channels);
    text += "), }";
    constexpr std::size_t PREFIX = 10;
    const std::size_t used = PREFIX + text.size() + 1;
    text.append((ALIGNMENT - used % ALIGNMENT) % ALIGNMENT, ' ');
    text += '\n';
    file.append(MAGIC);
    const char version[] = {1, 0, static_cast<char>(text.size() & 0xff), static_cast<char>(text.size() >> 8)};
    file.append(version, sizeof version);
    file.append(text);
}

void readNpyDepth(InputFile& file, DepthSink& sink) {
    const NpyHeader npy = readNpyHeader(file);
    const bool real = npy.kind == 'f';
    if (npy.channels != 1 || npy.kind == 'i') failFormat("an array of several channels is not a depth map");
    DepthHeader header;
    header.width = npy.width;
    header.height = npy.height;
    header.sampleBits = static_cast<int>(8 * npy.itemBytes);
    header.encoding = npy.swapped ? ENCODING::BINARY_BIG_ENDIAN : ENCODING::BINARY;
    if (!sink.begin(header)) return;
    auto* const bytes = reinterpret_cast<unsigned char*>(sink.samples());
    readNpyElements(file, npy, bytes);
    if (npy.itemBytes == 1) {
        for (std::size_t i = sink.pixels(); i-- > 0;) {
            const std::uint16_t sample = bytes[i];
            std::memcpy(bytes + i * sizeof sample, &sample, sizeof sample);
        }
    }
    if (real) {
        sink.takeFloats();
    } else {
        sink.takeSamples();
    }
}

void writeNpyDepth(OutputFile& file, const DepthHeader& header, DepthSource& source) {
    file.expect(header.width * header.height * sizeof(float));
    writeNpyHeader(file, {'f', sizeof(float), false, false, header.height, header.width, 1});
    std::vector<float> row(header.width);
    for (std::size_t y = 0; y < header.height; ++y) {
        source.floats(y, row.data());
        file.append(row.data(), row.size() * sizeof(float));
    }
}

}  // namespace detail

using namespace detail;  // NOLINT(google-build-using-namespace): the library's own other half

Result writeNpy(const Mat& mat, const String& path, const NpyOptions& options) {
    return guarded(path, [&](Result& result) {
        requireHostSide(mat, "the array");
        const Element& element = elementOf(mat.dataType);
        const std::size_t rowBytes = mat.width * element.itemBytes * element.channels;
        result.points = mat.width * mat.height;
        OutputFile file(path, {options.sync, &options.progress});
        file.expect(rowBytes * mat.height);
        writeNpyHeader(
            file, {element.kind, element.itemBytes, false, false, mat.height, mat.width, element.channels});
        for (std::size_t y = 0; y < mat.height; ++y) {
            file.append(rowOf(mat, y), rowBytes);
        }
        result.bytes = file.finish();
        result.written = result.points;
    });
}

Result readNpy(const String& path, Mat& mat, const Progress& progress) {
    return guarded(path, [&](Result& result) {
        InputFile file(path, &progress);
        const NpyHeader header = readNpyHeader(file);
        Mat loaded = newMat(header.width, header.height, typeOf(header));
        readNpyElements(file, header, loaded.ptrCPU);
        result.points = result.written = header.width * header.height;
        result.bytes = file.size();
        deliver(loaded, mat);
    });
}

}  // namespace vela::io
