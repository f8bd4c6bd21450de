// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_io/detail/TextReader.hpp"
#include "vela_io/detail/points.hpp"

#include <optional>
#include <string_view>
#include <vector>

namespace vela::io::detail {

/// Type of a number in a file.
enum class SCALAR { INT8, UINT8, INT16, UINT16, INT32, UINT32, INT64, UINT64, FLOAT32, FLOAT64 };

std::size_t bytesOf(SCALAR type);

/// Meaning of a field of a record.
enum class ROLE {
    SKIPPED,
    X,
    Y,
    Z,
    RED,
    GREEN,
    BLUE,
    ALPHA,
    NORMAL_X,
    NORMAL_Y,
    NORMAL_Z,
    PACKED_RGB,  ///< 32 bits 0xAARRGGBB as an integer or in the bits of a float; the upper byte means nothing
    PACKED_RGBA,  ///< the same, the upper byte is the alpha
};

/// The role that files of all formats give to a name, in any case.
ROLE roleOf(std::string_view name);

struct Field {
    ROLE role = ROLE::SKIPPED;
    SCALAR type = SCALAR::FLOAT32;
    std::size_t offset = 0;  ///< of the first byte in a record
    std::size_t count = 1;   ///< how many numbers; a role is that of the first
};

/// The points of a file: records of fields, one per point.
class RecordLayout {
public:
    /// Appends a field. Only the first field of a role is used; later ones are skipped.
    void add(std::string_view name, SCALAR type, std::size_t count = 1);
    void add(ROLE role, SCALAR type, std::size_t count = 1);

    std::size_t recordBytes() const { return recordBytes_; }
    std::size_t valuesPerRecord() const { return values_; }
    const std::vector<Field>& fields() const { return fields_; }
    bool has(ROLE role) const;

    /// Sets colour, alpha and normals of a header. Missing coordinates are an error.
    void describe(CloudHeader& header) const;

    /// Reads `count` records from text or from numbers of either byte order into the sink.
    void readText(TextReader& reader, std::size_t count, PointSink& sink) const;
    void readBinary(InputFile& file, std::size_t count, bool bigEndian, PointSink& sink) const;
    /// Puts the numbers of `out.count` records that lie in memory into the points.
    void decode(const char* records, bool bigEndian, PointBlock& out) const;

private:
    std::optional<std::size_t> placeOfThree(ROLE first, SCALAR type) const;
    bool decodeUsual(const char* records, PointBlock& out) const;

    std::vector<Field> fields_;
    std::size_t recordBytes_ = 0;
    std::size_t values_ = 0;
};

/// Reads one number of a role from text into a point.
void readTextField(TextReader& reader, const Field& field, Point& point, Normal& normal);

/// The same with the number at hand; colours of integer fields are 0 to 255, of real ones 0 to 1.
void assignText(const Field& field, float value, Point& point, Normal& normal);

/// Puts `count` numbers, `stride` bytes apart, into their place in as many points.
void decodeField(const char* numbers, std::size_t stride, const Field& field, bool bigEndian,
                 PointBlock& out);

}  // namespace vela::io::detail
