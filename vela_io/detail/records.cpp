// SPDX-License-Identifier: Apache-2.0
#include "vela_io/detail/records.hpp"

#include "vela_io/detail/words.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <type_traits>
#include <utility>

namespace vela::io::detail {
namespace {

struct RoleName {
    std::string_view name;
    ROLE role;
};

constexpr RoleName ROLE_NAMES[] = {
    {"x", ROLE::X},
    {"y", ROLE::Y},
    {"z", ROLE::Z},
    {"red", ROLE::RED},
    {"green", ROLE::GREEN},
    {"blue", ROLE::BLUE},
    {"alpha", ROLE::ALPHA},
    {"r", ROLE::RED},
    {"g", ROLE::GREEN},
    {"b", ROLE::BLUE},
    {"a", ROLE::ALPHA},
    {"diffuse_red", ROLE::RED},
    {"diffuse_green", ROLE::GREEN},
    {"diffuse_blue", ROLE::BLUE},
    {"nx", ROLE::NORMAL_X},
    {"ny", ROLE::NORMAL_Y},
    {"nz", ROLE::NORMAL_Z},
    {"normal_x", ROLE::NORMAL_X},
    {"normal_y", ROLE::NORMAL_Y},
    {"normal_z", ROLE::NORMAL_Z},
    {"rgb", ROLE::PACKED_RGB},
    {"rgba", ROLE::PACKED_RGBA},
};

constexpr std::size_t SCALAR_BYTES[] = {1, 1, 2, 2, 4, 4, 8, 8, 4, 8};

/// A number of a file as it lies there, in either byte order.
template <class T, bool swapped>
T load(const char* from) {
    if constexpr (swapped && sizeof(T) > 1) {
        char bytes[sizeof(T)];
        std::reverse_copy(from, from + sizeof(T), bytes);
        from = bytes;
        T value;
        std::memcpy(&value, from, sizeof value);
        return value;
    }
    T value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

template <class T>
std::uint8_t asByte(T value) {
    if constexpr (std::is_same_v<T, std::uint8_t>) return value;
    if constexpr (std::is_same_v<T, std::uint16_t>) return static_cast<std::uint8_t>(value >> 8);
    if constexpr (std::is_floating_point_v<T>) {
        // From 0 to 1. NaN comes to 0.
        const T scaled = std::floor(value * 255 + T(0.5));
        return scaled >= 255 ? 255 : scaled > 0 ? static_cast<std::uint8_t>(scaled) : std::uint8_t{0};
    }
    return static_cast<std::uint8_t>(std::clamp(static_cast<double>(value), 0.0, 255.0));
}

std::uint32_t packedColor(float value) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

template <class T>
std::uint32_t asPacked(T value) {
    if constexpr (std::is_same_v<T, float>) return packedColor(value);
    if constexpr (std::is_integral_v<T>) {
        return static_cast<std::uint32_t>(value);
    } else {
        return value >= 0 && value <= 4294967295.0 ? static_cast<std::uint32_t>(value) : 0;
    }
}

void setPacked(Point& point, std::uint32_t packed, bool withAlpha) {
    point.color = {static_cast<std::uint8_t>(packed >> 16), static_cast<std::uint8_t>(packed >> 8),
                   static_cast<std::uint8_t>(packed),
                   withAlpha ? static_cast<std::uint8_t>(packed >> 24) : std::uint8_t{255}};
}

template <class T>
void assign(ROLE role, T value, Point& point, Normal& normal) {
    switch (role) {
        case ROLE::SKIPPED:
            break;
        case ROLE::X:
            point.x = static_cast<float>(value);
            break;
        case ROLE::Y:
            point.y = static_cast<float>(value);
            break;
        case ROLE::Z:
            point.z = static_cast<float>(value);
            break;
        case ROLE::RED:
            point.color[0] = asByte(value);
            break;
        case ROLE::GREEN:
            point.color[1] = asByte(value);
            break;
        case ROLE::BLUE:
            point.color[2] = asByte(value);
            break;
        case ROLE::ALPHA:
            point.color[3] = asByte(value);
            break;
        case ROLE::NORMAL_X:
            normal.x = static_cast<float>(value);
            break;
        case ROLE::NORMAL_Y:
            normal.y = static_cast<float>(value);
            break;
        case ROLE::NORMAL_Z:
            normal.z = static_cast<float>(value);
            break;
        case ROLE::PACKED_RGB:
            setPacked(point, asPacked(value), false);
            break;
        case ROLE::PACKED_RGBA:
            setPacked(point, asPacked(value), true);
            break;
    }
}

template <class T, bool swapped>
void decodeColumn(const char* numbers, std::size_t stride, ROLE role, PointBlock& out) {
    // The role does not change in the loop: the compiler hoists the switch and makes a loop for each role.
    for (std::size_t i = 0; i < out.count; ++i, numbers += stride) {
        assign(role, load<T, swapped>(numbers), out.points[i], out.normals[i]);
    }
}

template <class T>
void decodeOrder(const char* numbers, std::size_t stride, ROLE role, bool bigEndian, PointBlock& out) {
    if (bigEndian) {
        decodeColumn<T, true>(numbers, stride, role, out);
    } else {
        decodeColumn<T, false>(numbers, stride, role, out);
    }
}

}  // namespace

std::size_t bytesOf(SCALAR type) {
    return SCALAR_BYTES[static_cast<std::size_t>(type)];
}

ROLE roleOf(std::string_view name) {
    for (const RoleName& known : ROLE_NAMES) {
        if (equalIgnoringCase(name, known.name)) return known.role;
    }
    return ROLE::SKIPPED;
}

void RecordLayout::add(std::string_view name, SCALAR type, std::size_t count) {
    add(roleOf(name), type, count);
}

void RecordLayout::add(ROLE role, SCALAR type, std::size_t count) {
    fields_.push_back({has(role) ? ROLE::SKIPPED : role, type, recordBytes_, count});
    recordBytes_ += bytesOf(type) * count;
    values_ += count;
}

bool RecordLayout::has(ROLE role) const {
    return std::any_of(fields_.begin(), fields_.end(),
                       [role](const Field& field) { return field.role == role && field.count > 0; });
}

void RecordLayout::describe(CloudHeader& header) const {
    for (const auto& [role, name] :
         {std::pair(ROLE::X, "x"), std::pair(ROLE::Y, "y"), std::pair(ROLE::Z, "z")}) {
        if (!has(role)) failFormat(std::string("the points have no '") + name + "'");
    }
    const bool packed = has(ROLE::PACKED_RGB) || has(ROLE::PACKED_RGBA);
    header.color = packed || (has(ROLE::RED) && has(ROLE::GREEN) && has(ROLE::BLUE));
    header.alpha = header.color && (has(ROLE::ALPHA) || has(ROLE::PACKED_RGBA));
    header.normals = has(ROLE::NORMAL_X) && has(ROLE::NORMAL_Y) && has(ROLE::NORMAL_Z);
}

void RecordLayout::readText(TextReader& reader, std::size_t count, PointSink& sink) const {
    PointBlock& block = sink.block();
    for (std::size_t i = 0; i < count; ++i) {
        Point point;
        point.color[3] = 255;
        Normal& normal = block.normals[block.count];
        for (const Field& field : fields_) {
            readTextField(reader, field, point, normal);
        }
        block.points[block.count++] = point;
        if (block.count == PointBlock::CAPACITY) sink.add();
    }
    sink.add();
}

void RecordLayout::readBinary(InputFile& file, std::size_t count, bool bigEndian, PointSink& sink) const {
    const std::size_t atOnce = std::min(PointBlock::CAPACITY, InputFile::BLOCK / recordBytes_);
    if (atOnce == 0) failFormat("the points have too many properties");
    while (count > 0) {
        const std::size_t part = std::min(count, atOnce);
        if (!file.fill(part * recordBytes_)) failFormat("the file ends too early");
        sink.block().clear(part);
        decode(file.begin(), bigEndian, sink.block());
        file.take(file.begin() + part * recordBytes_);
        sink.add();
        count -= part;
    }
}

/// Where in a record three fields of one type follow each other; nothing if they do not.
std::optional<std::size_t> RecordLayout::placeOfThree(ROLE first, SCALAR type) const {
    for (std::size_t i = 0; i + 2 < fields_.size(); ++i) {
        if (fields_[i].role != first) continue;
        for (std::size_t k = 0; k < 3; ++k) {
            const Field& field = fields_[i + k];
            const bool fits = static_cast<int>(field.role) == static_cast<int>(first) + static_cast<int>(k);
            if (!fits || field.type != type || field.count != 1) return {};
        }
        return fields_[i].offset;
    }
    return {};
}

/// Floats with bytes or a packed colour, as nearly all files have them, record by record. False for others.
bool RecordLayout::decodeUsual(const char* records, PointBlock& out) const {
    const auto xyz = placeOfThree(ROLE::X, SCALAR::FLOAT32);
    const auto rgb = placeOfThree(ROLE::RED, SCALAR::UINT8);
    const auto packed = std::find_if(fields_.begin(), fields_.end(), [](const Field& field) {
        return field.role == ROLE::PACKED_RGB && bytesOf(field.type) == 4 && field.count == 1;
    });
    const bool isPacked = packed != fields_.end();
    const auto roles = std::count_if(fields_.begin(), fields_.end(),
                                     [](const Field& field) { return field.role != ROLE::SKIPPED; });
    if (!xyz || (rgb && isPacked) || roles != 3 + (rgb ? 3 : 0) + (isPacked ? 1 : 0)) return false;
    const char* const coordinates = records + *xyz;
    const char* const colors = records + (rgb ? *rgb : isPacked ? packed->offset : 0);
    for (std::size_t i = 0; i < out.count; ++i) {
        Point& point = out.points[i];
        std::memcpy(static_cast<void*>(&point), coordinates + i * recordBytes_, 12);
        if (rgb) std::memcpy(point.color.data(), colors + i * recordBytes_, 3);
        if (isPacked) setPacked(point, load<std::uint32_t, false>(colors + i * recordBytes_), false);
    }
    return true;
}

void RecordLayout::decode(const char* records, bool bigEndian, PointBlock& out) const {
    if (!bigEndian && decodeUsual(records, out)) return;
    for (const Field& field : fields_) {
        decodeField(records + field.offset, recordBytes_, field, bigEndian, out);
    }
}

void decodeField(const char* numbers, std::size_t stride, const Field& field, bool bigEndian,
                 PointBlock& out) {
    if (field.role == ROLE::SKIPPED || field.count == 0) return;
    switch (field.type) {
        case SCALAR::INT8:
            return decodeOrder<std::int8_t>(numbers, stride, field.role, bigEndian, out);
        case SCALAR::UINT8:
            return decodeOrder<std::uint8_t>(numbers, stride, field.role, bigEndian, out);
        case SCALAR::INT16:
            return decodeOrder<std::int16_t>(numbers, stride, field.role, bigEndian, out);
        case SCALAR::UINT16:
            return decodeOrder<std::uint16_t>(numbers, stride, field.role, bigEndian, out);
        case SCALAR::INT32:
            return decodeOrder<std::int32_t>(numbers, stride, field.role, bigEndian, out);
        case SCALAR::UINT32:
            return decodeOrder<std::uint32_t>(numbers, stride, field.role, bigEndian, out);
        case SCALAR::INT64:
            return decodeOrder<std::int64_t>(numbers, stride, field.role, bigEndian, out);
        case SCALAR::UINT64:
            return decodeOrder<std::uint64_t>(numbers, stride, field.role, bigEndian, out);
        case SCALAR::FLOAT32:
            return decodeOrder<float>(numbers, stride, field.role, bigEndian, out);
        case SCALAR::FLOAT64:
            return decodeOrder<double>(numbers, stride, field.role, bigEndian, out);
    }
}

void assignText(const Field& field, float value, Point& point, Normal& normal) {
    const bool color = field.role >= ROLE::RED && field.role <= ROLE::ALPHA;
    if (color && field.type == SCALAR::UINT8) {
        assign(field.role, static_cast<std::uint8_t>(value >= 0 ? std::min(value, 255.0F) : 0.0F), point,
               normal);
    } else {
        assign(field.role, value, point, normal);
    }
}

void readTextField(TextReader& reader, const Field& field, Point& point, Normal& normal) {
    const bool real = field.type == SCALAR::FLOAT32 || field.type == SCALAR::FLOAT64;
    std::size_t skipped = field.count;
    if (field.role != ROLE::SKIPPED && field.count > 0) {
        --skipped;
        switch (field.role) {
            case ROLE::X:
                point.x = reader.nextFloat();
                break;
            case ROLE::Y:
                point.y = reader.nextFloat();
                break;
            case ROLE::Z:
                point.z = reader.nextFloat();
                break;
            case ROLE::NORMAL_X:
                normal.x = reader.nextFloat();
                break;
            case ROLE::NORMAL_Y:
                normal.y = reader.nextFloat();
                break;
            case ROLE::NORMAL_Z:
                normal.z = reader.nextFloat();
                break;
            case ROLE::PACKED_RGB:
            case ROLE::PACKED_RGBA: {
                // The bits of a float, printed as such: a tiny number. Some writers print the whole number.
                const double value = real ? reader.nextDouble() : reader.nextWhole();
                const bool bits = real && !(value >= 1 && value == std::floor(value));
                setPacked(point, bits ? packedColor(static_cast<float>(value)) : asPacked(value),
                          field.role == ROLE::PACKED_RGBA);
                break;
            }
            default:
                if (field.type == SCALAR::UINT8) {
                    assign(field.role, reader.nextByte(), point, normal);
                } else if (real) {
                    assign(field.role, reader.nextFloat(), point, normal);
                } else if (field.type == SCALAR::UINT16) {
                    assign(field.role, static_cast<std::uint16_t>(reader.nextWhole()), point, normal);
                } else {
                    assign(field.role, reader.nextDouble() / 255, point, normal);
                }
        }
    }
    for (; skipped > 0; --skipped) {
        reader.skipToken();
    }
}

}  // namespace vela::io::detail
