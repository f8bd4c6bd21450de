// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/geometry/frames.hpp"
#include "vela_core/geometry/units.hpp"
#include "vela_core/types/ErrorCode.hpp"
#include "vela_core/types/String.hpp"
#include "vela_core/utils/Mat.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

namespace vela {

/// Checked files of point clouds, depth maps and arrays.
///
/// Every function returns a `Result`; nothing is thrown, printed or logged. All of them work on the host side
/// of a Mat, with rows at any step; writers never change the Mat. A path "-" is standard
/// output or standard input; the format must then be given when writing and is recognised when reading.
///
/// A file is written beside its target under a fresh name, checked to its last `close` and then renamed, so
/// that the target is the old file or the whole new one whenever the process ends. A new file has the mode
/// that the umask leaves, a replaced one keeps its mode; a symbolic link is followed and stays. Pipes and
/// devices are written in place.
///
/// Readers recognise a format by its first bytes, and check each count against the size of the file before
/// they allocate. Beside the Mat, reading and writing take at most 4 MB, whatever the size of the
/// file; only compressed PCD files are unpacked in memory. A failed read leaves the Mat as it was.
///
/// The functions may be called from several threads at once, on different Mats.
namespace io VELA_API {

/// Kind of point-cloud file.
enum class CLOUD_FILE : std::int32_t {
    XYZ = 0,  ///< text, one point per line; ".xyz", ".txt", ".csv", ".asc", ".pts"
    PCD = 1,  ///< point cloud data, version .7; ".pcd"
    PLY = 2,  ///< polygon file format, version 1.0; ".ply"
    VTK = 3,  ///< legacy polydata, version 3.0; ".vtk"
};

/// Kind of depth-map file.
enum class DEPTH_FILE : std::int32_t {
    PNG = 0,  ///< grey samples of 16 bits; ".png"
    PFM = 1,  ///< floats; ".pfm"
    PGM = 2,  ///< grey samples of 16 bits; ".pgm"
    NPY = 3,  ///< a NumPy array of floats; ".npy"
};

/// How numbers are encoded in a file.
enum class ENCODING : std::int32_t {
    ASCII = 0,              ///< decimal text
    BINARY = 1,             ///< little-endian; VTK and PGM files, and PNG, are big-endian by their own rules
    BINARY_BIG_ENDIAN = 2,  ///< PLY only
    BINARY_COMPRESSED = 3,  ///< PCD only: field by field, LZF
};

/// Order of the rows of an image in a file.
enum class ROW_ORDER : std::int32_t {
    TOP_FIRST = 0,     ///< as in a Mat: the top row comes first
    BOTTOM_FIRST = 1,  ///< the bottom row comes first
};

/// What a file holds, judged by its first bytes.
enum class FILE_KIND : std::int32_t {
    UNKNOWN = 0,
    CLOUD = 1,  ///< for `readCloud`
    DEPTH = 2,  ///< for `readDepth`: PNG of 16-bit grey, PGM, PFM
    ARRAY = 3,  ///< for `readNpy`; `readDepth` also reads it if it is two-dimensional
};

/// The display name; "Unknown" for a value without enumerator.
String toString(const CLOUD_FILE& value);
/// The display name; "Unknown" for a value without enumerator.
String toString(const DEPTH_FILE& value);
/// The display name; "Unknown" for a value without enumerator.
String toString(const ENCODING& value);
/// The display name; "Unknown" for a value without enumerator.
String toString(const ROW_ORDER& value);
/// The display name; "Unknown" for a value without enumerator.
String toString(const FILE_KIND& value);

/// Outcome of a call.
struct Result {
    /// `SUCCESS`; `INVALID_FUNCTION_PARAMETERS` for a Mat or options that do not fit the format,
    /// `INVALID_COORDINATE_SYSTEM` for an unknown axis convention; `FAILURE` otherwise.
    ERROR_CODE code = ERROR_CODE::SUCCESS;
    /// One line without a line feed. On failure what is wrong and where, as in "cloud.ply: no space left on
    /// device (written 1.2 of 19.4 MB)" or "cloud.ply:12: a number is missing"; on success empty, or what was
    /// ignored, as in "cloud.ply: 12 elements 'face' ignored".
    String text;
    std::size_t points = 0;   ///< points or pixels given to a writer, or found by a reader
    std::size_t written = 0;  ///< points or pixels in the file, or in the Mat that was read
    std::size_t dropped = 0;  ///< points left out because x, y or z is not finite; pixels without a depth
    std::size_t clipped = 0;  ///< pixels whose finite depth has no sample of its own in the file
    std::size_t bytes = 0;    ///< of the file
    /// `errno` of the system call that failed, 0 if none did; ECANCELED when the progress function cancelled
    /// the call.
    int systemError = 0;

    /// Whether `code` is `SUCCESS`.
    bool ok() const { return code == ERROR_CODE::SUCCESS; }
};

/// Called from time to time, in the calling thread, with the bytes done so far and in total (0 if unknown).
/// Returning false cancels the call: it fails, and the target file or the Mat stays as it was.
using Progress = std::function<bool(std::size_t done, std::size_t total)>;

// Point clouds

/// How `writeCloud` writes.
struct CloudOptions {
    std::optional<CLOUD_FILE> format;  ///< by the extension of the path, if not given
    std::optional<ENCODING> encoding;  ///< `BINARY` where the format has it, if not given
    /// Write the red, green and blue of `MAT_32F_C4` clouds, if the format has colour (VTK and XYZ: after the
    /// coordinates).
    bool color = true;
    bool alpha = false;            ///< also write the fourth colour byte; PLY and PCD only
    const Mat* normals = nullptr;  ///< `MAT_32F_C3` or `C4` of the cloud's size: x, y, z of a normal each
    /// Keep width, height and invalid points, which are then written as they are. Otherwise the file has one
    /// row, without the points of which x, y or z is not finite.
    bool keepGrid = false;
    std::optional<UNIT> unit;               ///< of the Mat; stated in the file
    std::optional<COORDINATE_SYSTEM> axes;  ///< of the Mat; stated in the file
    /// Convert to this unit while writing, and state it in the file; the Mat keeps its own. Needs `unit`.
    std::optional<UNIT> targetUnit;
    /// Convert points and normals to this axis convention while writing; needs `axes`.
    std::optional<COORDINATE_SYSTEM> targetAxes;
    char separator = ' ';  ///< of XYZ files: a blank, ',' or ';'
    bool sync = false;     ///< `fsync` the file and its folder before success is returned
    Progress progress;     ///< called from time to time, if not empty
};

/// How `readCloud` reads.
struct CloudReadOptions {
    std::optional<CLOUD_FILE> format;       ///< recognised by the first bytes, if not given
    bool color = true;                      ///< read colours if there are any
    bool fourChannels = false;              ///< `MAT_32F_C4` also without colours, the fourth float 0
    Mat* normals = nullptr;                 ///< takes the normals as `MAT_32F_C4`; emptied if there are none
    std::optional<UNIT> unit;               ///< of the file, where it states none
    std::optional<COORDINATE_SYSTEM> axes;  ///< of the file, where it states none
    std::optional<UNIT> targetUnit;         ///< convert to this unit; fails if the file's is unknown
    /// Convert to this axis convention; fails if the file's is unknown.
    std::optional<COORDINATE_SYSTEM> targetAxes;
    std::size_t maxPoints = 0x7fffffff;  ///< larger files are refused
    Progress progress;                   ///< called from time to time, if not empty
};

/// What a cloud file states about itself.
struct CloudInfo {
    CLOUD_FILE format = CLOUD_FILE::XYZ;  ///< kind of file
    ENCODING encoding = ENCODING::ASCII;  ///< form of its numbers
    std::size_t width = 0;                ///< of the grid, or the number of points
    std::size_t height = 0;               ///< of the grid, or 1
    std::size_t points = 0;               ///< points in the file
    std::size_t invalid = 0;              ///< points of which x, y or z is not finite; counted by `readCloud`
    bool hasColor = false;                ///< whether points have red, green and blue
    bool hasAlpha = false;                ///< whether points have a fourth colour byte
    bool hasNormals = false;              ///< whether points have normals
    std::optional<UNIT> unit;             ///< of the points in the Mat, or in the file for `inspectCloud`
    std::optional<COORDINATE_SYSTEM> axes;  ///< of the same points
    char separator = ' ';                   ///< of XYZ files
};

/// Writes the points of a `MAT_32F_C3` or `MAT_32F_C4` Mat, whose fourth float carries red, green, blue and a
/// fourth byte in memory order. Numbers in text are the shortest that read back to the same float. Numbers in
/// binary are the bits of the floats.
Result writeCloud(const Mat& cloud, const String& path, const CloudOptions& options = {});

/// Reads a cloud into a host Mat: `MAT_32F_C4` with the colours of the file (the fourth byte 255 unless the
/// file has one), `MAT_32F_C3` where it has none. Numbers of every scalar type are accepted; other properties
/// and elements are skipped, elements with a note in `Result::text`. A stated grid is restored.
Result readCloud(const String& path, Mat& cloud, CloudInfo* info = nullptr);
/// @overload
Result readCloud(const String& path, Mat& cloud, const CloudReadOptions& options, CloudInfo* info = nullptr);

/// Reads only the header; of XYZ files all lines, to count them.
Result inspectCloud(const String& path, CloudInfo& info);

// Depth maps

/// How `writeDepth` writes. A sample of PNG and PGM files is the depth in the target unit times `scale`,
/// rounded to the nearest; PFM and NumPy files hold the depth itself.
struct DepthOptions {
    std::optional<DEPTH_FILE> format;  ///< by the extension of the path, if not given
    std::optional<ENCODING> encoding;  ///< `ASCII` or `BINARY` for PGM; `BINARY` if not given
    std::optional<UNIT> unit;          ///< of the Mat; stated in PNG and PGM files
    std::optional<UNIT> targetUnit;    ///< convert to this unit while writing; needs `unit`
    /// Samples per unit of depth, above 0; stated in PNG and PGM files. If it is not given, a sample is a
    /// millimetre where the unit is known (1000 per metre), otherwise one unit of depth.
    std::optional<double> scale;
    /// Written for pixels without a depth: NaN, infinities and, in PNG and PGM, 0. PNG and PGM state it and
    /// use 0 if it is not given; PFM and NumPy files then keep the floats as they are.
    std::optional<double> invalid;
    /// Accept depths that have no sample: those above the largest sample become the largest; negative ones
    /// and those whose sample would mean "no depth" become invalid. Without it they are counted and the call
    /// fails.
    bool allowClipping = false;
    ROW_ORDER rows = ROW_ORDER::BOTTOM_FIRST;  ///< of PFM files
    int compression = -1;                      ///< of PNG files: zlib's level, 0 to 9; -1: only runs
    bool sync = false;                         ///< as in `CloudOptions`
    Progress progress;                         ///< called from time to time, if not empty
};

/// How `readDepth` reads. What a file states about itself takes precedence over these options.
struct DepthReadOptions {
    std::optional<UNIT> unit;        ///< of the file, where it states none
    std::optional<UNIT> targetUnit;  ///< convert to this unit; an error if the file's is not known
    std::optional<double> scale;  ///< samples per unit of depth, where the file states none; 1 if not given
    /// The sample or float that means "no depth", where the file states none. If it is not given, 0 for PNG
    /// and PGM, none for PFM and NumPy.
    std::optional<double> invalid;
    /// Of PFM files, which cannot state theirs. `saveDepthAs` writes the top row first.
    ROW_ORDER rows = ROW_ORDER::BOTTOM_FIRST;
    std::size_t maxPixels = 0x7fffffff;  ///< larger files are refused
    Progress progress;                   ///< called from time to time, if not empty
};

/// What a depth file states about itself.
struct DepthInfo {
    DEPTH_FILE format = DEPTH_FILE::PNG;    ///< kind of file
    ENCODING encoding = ENCODING::BINARY;   ///< form of its numbers
    std::size_t width = 0;                  ///< pixels in a row
    std::size_t height = 0;                 ///< rows
    int sampleBits = 0;                     ///< 8 or 16 for integers, 32 for floats
    std::size_t withDepth = 0;              ///< pixels with a depth; counted by `readDepth`
    std::optional<UNIT> unit;               ///< of the depths in the Mat, or in the file for `inspectDepth`
    double scale = 1;                       ///< samples per unit of depth in the file
    std::optional<double> invalid;          ///< sample of pixels without a depth, if there is one
    ROW_ORDER rows = ROW_ORDER::TOP_FIRST;  ///< as assumed for PFM
};

/// Writes a depth map, `MAT_32F_C1` or `MAT_US16_C1`.
Result writeDepth(const Mat& depth, const String& path, const DepthOptions& options = {});

/// Reads a depth map into a `MAT_32F_C1` host Mat, top row first: samples divided by the scale, NaN where the
/// file has no depth.
Result readDepth(const String& path, Mat& depth, DepthInfo* info = nullptr);
/// @overload
Result readDepth(const String& path, Mat& depth, const DepthReadOptions& options, DepthInfo* info = nullptr);

/// Reads only the header.
Result inspectDepth(const String& path, DepthInfo& info);

// Arrays

/// How `writeNpy` writes.
struct NpyOptions {
    bool sync = false;  ///< as in `CloudOptions`
    Progress progress;  ///< called from time to time, if not empty
};

/// Writes a Mat of any of the ten types as a NumPy array, format 1.0, of the shape (height, width) or
/// (height, width, channels): exact, rows packed.
Result writeNpy(const Mat& mat, const String& path, const NpyOptions& options = {});

/// Reads a NumPy array of two dimensions, or of three with up to four channels, into a host Mat of the type
/// that has its elements: float32, uint8, uint16 (one channel) or int8 (four), of either byte order, in C or
/// Fortran order. Other arrays are an error.
Result readNpy(const String& path, Mat& mat, const Progress& progress = {});

/// Kind of the file at `path`, by its first bytes and, for text of numbers, its extension; `UNKNOWN` also if
/// it cannot be read, and for "-".
FILE_KIND kindOf(const String& path);

}  // namespace io
}  // namespace vela
