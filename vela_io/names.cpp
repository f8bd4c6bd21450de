// SPDX-License-Identifier: Apache-2.0
#include "vela_io/io.hpp"
#include "vela_io/pictures.hpp"

namespace vela::io {
namespace {

template <class Enum>
struct Name {
    Enum value;
    const char* text;
};

constexpr Name<CLOUD_FILE> CLOUD_FILES[] = {
    {CLOUD_FILE::XYZ, "XYZ"}, {CLOUD_FILE::PCD, "PCD"}, {CLOUD_FILE::PLY, "PLY"}, {CLOUD_FILE::VTK, "VTK"}};

constexpr Name<DEPTH_FILE> DEPTH_FILES[] = {
    {DEPTH_FILE::PNG, "PNG"}, {DEPTH_FILE::PFM, "PFM"}, {DEPTH_FILE::PGM, "PGM"}, {DEPTH_FILE::NPY, "NPY"}};

constexpr Name<ENCODING> ENCODINGS[] = {{ENCODING::ASCII, "ASCII"},
                                        {ENCODING::BINARY, "BINARY"},
                                        {ENCODING::BINARY_BIG_ENDIAN, "BINARY_BIG_ENDIAN"},
                                        {ENCODING::BINARY_COMPRESSED, "BINARY_COMPRESSED"}};

constexpr Name<ROW_ORDER> ROW_ORDERS[] = {{ROW_ORDER::TOP_FIRST, "TOP_FIRST"},
                                          {ROW_ORDER::BOTTOM_FIRST, "BOTTOM_FIRST"}};

constexpr Name<FILE_KIND> FILE_KINDS[] = {{FILE_KIND::UNKNOWN, "UNKNOWN"},
                                          {FILE_KIND::CLOUD, "CLOUD"},
                                          {FILE_KIND::DEPTH, "DEPTH"},
                                          {FILE_KIND::ARRAY, "ARRAY"}};

constexpr Name<COLOR_BY> COLOR_MEANINGS[] = {
    {COLOR_BY::RGB, "RGB"}, {COLOR_BY::DEPTH, "DEPTH"}, {COLOR_BY::HEIGHT, "HEIGHT"}};

constexpr Name<CLOUD_VIEW> CLOUD_VIEWS[] = {{CLOUD_VIEW::FRONT, "FRONT"},
                                            {CLOUD_VIEW::TOP, "TOP"},
                                            {CLOUD_VIEW::LEFT, "LEFT"},
                                            {CLOUD_VIEW::RIGHT, "RIGHT"},
                                            {CLOUD_VIEW::BACK, "BACK"}};

template <class Enum, std::size_t count>
String nameIn(const Name<Enum> (&names)[count], Enum value) {
    for (const Name<Enum>& name : names) {
        if (name.value == value) return name.text;
    }
    return "Unknown";
}

}  // namespace

String toString(const CLOUD_FILE& value) {
    return nameIn(CLOUD_FILES, value);
}

String toString(const DEPTH_FILE& value) {
    return nameIn(DEPTH_FILES, value);
}

String toString(const ENCODING& value) {
    return nameIn(ENCODINGS, value);
}

String toString(const ROW_ORDER& value) {
    return nameIn(ROW_ORDERS, value);
}

String toString(const FILE_KIND& value) {
    return nameIn(FILE_KINDS, value);
}

String toString(const COLOR_BY& value) {
    return nameIn(COLOR_MEANINGS, value);
}

String toString(const CLOUD_VIEW& value) {
    return nameIn(CLOUD_VIEWS, value);
}

}  // namespace vela::io
