// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/ErrorCode.hpp"
#include "vela_core/types/Memory.hpp"
#include "vela_core/types/PixelTraits.hpp"
#include "vela_core/types/PixelType.hpp"
#include "vela_core/types/Resolution.hpp"
#include "vela_core/types/String.hpp"
#include "vela_core/types/Vector.hpp"
#include "vela_gpu/runtime.hpp"

#include <cstddef>
#include <type_traits>

namespace vela VELA_API {

/// Two-dimensional image of one element type and one to four channels, in host memory, in GPU memory, in both
/// (two buffers that explicit copies keep in step), or in one CUDA managed buffer.
///
/// A Mat either owns its buffers (`alloc`, `clone`, `move` into it) and releases them in `free` and when it
/// is destroyed, or refers to buffers owned elsewhere (`ref`, copies, wrapped memory) and never releases
/// anything; the owner must then outlive it. Copying and assigning make references; the deep copies are
/// `clone`, `copyTo` and `setFrom`.
///
/// Mats may share buffers: an owner that is assigned from a reference into its own buffers stays as it is,
/// and copies read their source before they release anything. A reference is not told when its owner releases
/// or replaces the buffers: it dangles from then on, as a pointer would. That includes references to an owner
/// which then becomes the destination of a copy that does not fit it.
///
/// A side holds `height` rows; row y starts y steps after its pointer. Owned host and managed rows are
/// packed, owned device rows are pitched. There is no lock: one Mat is used by one thread at a time.
class Mat {
public:
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t channels = 0;
    std::size_t stepBytesGPU = 0;  ///< bytes from row to row of the device buffer
    /// Bytes from row to row of the host buffer; `alloc` sets it, packed, also where there is no host buffer.
    std::size_t stepBytesCPU = 0;
    std::size_t pixelBytes = 0;  ///< all channels
    MAT_TYPE dataType = MAT_TYPE::MAT_32F_C1;
    MEM memType = MEM::CPU;  ///< where the data lies
    unsigned char* ptrCPU = nullptr;
    unsigned char* ptrGPU = nullptr;  ///< never read by host code unless managed
    bool isInit = false;              ///< the fields describe usable data
    bool memoryOwner = false;
    String name = "n/a";               ///< label in messages; only C++ moves carry it to another Mat
    bool extraFlag = false;            ///< travels with `move`; not used by the library
    unsigned long long timestamp = 0;  ///< capture time in nanoseconds

    /// An empty Mat.
    Mat() = default;

    /// `alloc` with the same arguments.
    Mat(std::size_t width, std::size_t height, MAT_TYPE type, MEM mem = MEM::CPU);
    Mat(Resolution resolution, MAT_TYPE type, MEM mem = MEM::CPU);

    /// Refers to the caller's buffer on side `mem`, `CPU` or `GPU`, whose rows are `step` bytes apart.
    Mat(std::size_t width, std::size_t height, MAT_TYPE type, unsigned char* ptr, std::size_t step, MEM mem);
    Mat(Resolution resolution, MAT_TYPE type, unsigned char* ptr, std::size_t step, MEM mem);

    /// Refers to the caller's host and device buffers, as `MEM_BOTH`.
    Mat(std::size_t width, std::size_t height, MAT_TYPE type, unsigned char* ptrCPU, std::size_t stepCPU,
        unsigned char* ptrGPU, std::size_t stepGPU);
    Mat(Resolution resolution, MAT_TYPE type, unsigned char* ptrCPU, std::size_t stepCPU,
        unsigned char* ptrGPU, std::size_t stepGPU);

    /// `ref(source)`: a copy refers to the same buffers.
    Mat(const Mat& source);
    Mat& operator=(const Mat& source);

    /// Takes an owner's buffers over as `move` does, or refers to what a reference refers to, and takes the
    /// name over in both cases; the source's name is then empty. Assigning to an owner from a reference into
    /// its own buffers changes neither of the two.
    Mat(Mat&& source) noexcept;
    Mat& operator=(Mat&& source) noexcept;

    ~Mat();

    /// Releases what this Mat owned and allocates uninitialised buffers on the side or sides of `mem`; `type`
    /// sets `channels` and `pixelBytes` (0 for an unknown type). Nothing is returned: a failed device
    /// allocation is printed on standard output, a `mem` above `MEM_MANAGED` too, and the Mat then claims to
    /// be initialised and owning with null pointers. A failed host allocation throws `std::bad_alloc` and
    /// leaves an empty Mat. A number of bytes that does not fit into `size_t` is an allocation that fails.
    /// Device rows of 3- and 12-byte pixels get a pitch that is a whole number of pixels.
    void alloc(std::size_t width, std::size_t height, MAT_TYPE type, MEM mem = MEM::CPU);
    void alloc(Resolution resolution, MAT_TYPE type, MEM mem = MEM::CPU);

    /// Releases a side or both; managed memory is always released whole. With one of two sides left the Mat
    /// stays initialised and owning; otherwise its sizes become 0. For a reference only the sizes are reset.
    /// A device buffer that cannot be freed is printed and logged.
    void free(MEM mem = MEM_BOTH);

    /// Makes this Mat a reference to the buffers of `source`, after `free`; an empty source leaves it empty.
    /// So `m.ref(m)` empties m; a reference into buffers that this Mat owns changes nothing. The name is not
    /// taken over.
    void ref(const Mat& source);

    /// Deep copy of `source` into buffers allocated on the same sides, with its time stamp and without its
    /// name. Sizes are limited to 2^31 - 1. Cloning itself, or a reference to its own whole buffers, takes
    /// only the time stamp over. `FAILURE`, without a change, when the source is not initialised; failed
    /// copies are printed and do not change the result. Throws as `alloc` does.
    ERROR_CODE clone(const Mat& source);

    /// Hands buffers and ownership to `destination`, which releases its own first and keeps its name.
    /// `FAILURE`, without a change, when this Mat does not own its memory.
    ERROR_CODE move(Mat& destination);

    /// Exchanges two owning Mats, but not their names, by three moves through a temporary. References cannot
    /// be moved: if `a` is one, it receives the buffers of `b`, and `b` becomes empty; if `b` is one, it
    /// stays as it is, and `a` becomes empty.
    static void swap(Mat& a, Mat& b);

    // The pixel type N of the templates below is one of float, unsigned char, unsigned short, Vector2,
    // Vector3 and Vector4 of float and of unsigned char, and Vector4<char>; any other type stops the compiler
    // with a message that lists them (detail::RequirePixel). Where the pixel is checked at run time, its size
    // must be that of the Mat's pixels: any type of the same size will do, so that four bytes can be set by
    // one packed float. Host pixels are addressed as packed, whatever the step; device pixels by whole pixels
    // of the step.

    /// Sets every pixel of one side, `CPU` or `GPU`; for both sides call it twice. The device is filled on
    /// the null stream, without waiting. `FAILURE`, without a change, for another `mem`, a side that the Mat
    /// does not have, another pixel size, or a Mat that is not initialised.
    template <class N, class = typename detail::RequirePixel<N>::type>
    ERROR_CODE setTo(N value, MEM mem = MEM::CPU);

    /// Sets the pixel (x, y) of one side, `CPU` or `GPU`, on the device by a copy that is complete on return.
    /// Neither bounds nor the pixel size are checked: they are the caller's. `FAILURE` for another `mem`, a
    /// side that the Mat does not have, or a Mat that is not initialised; a failed copy is printed and is
    /// `SUCCESS`.
    template <class N, class = typename detail::RequirePixel<N>::type>
    ERROR_CODE setValue(std::size_t x, std::size_t y, N value, MEM mem = MEM::CPU);

    /// Reads the pixel (x, y) of one side, `CPU` or `GPU`, on the device by a copy that is complete on
    /// return. `value` is zeroed first and stays so on failure: for another `mem`, a side that the Mat does
    /// not have, a pixel outside the image, another pixel size, or a Mat that is not initialised. A failed
    /// copy is printed and is `SUCCESS`.
    template <class N, class = typename detail::RequirePixel<N>::type>
    ERROR_CODE getValue(std::size_t x, std::size_t y, N* value, MEM mem = MEM::CPU) const;

    /// The first pixel of one side, `CPU`, `GPU` or `MEM_MANAGED`, unchecked and writable, unless N is const;
    /// null for other values.
    template <class N, class = typename detail::RequirePixel<std::remove_const_t<N>>::type>
    N* getPtr(MEM mem = MEM::CPU) const {
        if (mem == MEM::CPU) return reinterpret_cast<N*>(ptrCPU);
        if (mem == MEM::GPU || mem == MEM_MANAGED) return reinterpret_cast<N*>(ptrGPU);
        return nullptr;
    }

    /// Whether the Mat is initialised and has a host side: `memType` is `CPU`, `MEM_BOTH` or `MEM_MANAGED`.
    bool isOnHost() const noexcept {
        return isInit && (memType == MEM::CPU || memType == MEM_BOTH || memType == MEM_MANAGED);
    }

    /// Whether the Mat is initialised and has a device side: `memType` is `GPU`, `MEM_BOTH` or `MEM_MANAGED`.
    bool isOnDevice() const noexcept {
        return isInit && (memType == MEM::GPU || memType == MEM_BOTH || memType == MEM_MANAGED);
    }

    /// One line that describes the Mat, for logs: its name or, without one, its address, then time stamp,
    /// size, channels, element, sides and ownership, ended by ".\n".
    String getInfos() const;

    /// Writes the Mat to the kind of file that the extension of `path` (after the last ".", four characters
    /// at most, in lower case) and the pixel type ask for: `MAT_32F_C1` by `saveDepthAs` with factor 1
    /// ("png", "pgm", else PFM), `MAT_32F_C3` without and `MAT_32F_C4` with colour by `savePointCloudAs`
    /// ("ply", "vtk", "xyz", else PCD), which add their extension if it is missing; bytes of 1, 3 and 4
    /// channels, and 16 bits as "png", by OpenCV, channels in the Mat's order. `mem` is `CPU`, or `GPU` to
    /// bring the host side up to date first. `compression` runs from 0 to 100 for "png" and "jpg"; -1 is 30
    /// for PNG (level 3) and 5 for JPEG (quality 95).
    ///
    /// The pixels of a `MAT_32F_C3` cloud are regrouped: its floats are read four by four, as those of a
    /// `MAT_32F_C4` cloud, so that what is written are not its points. Convert it to four floats a pixel
    /// first.
    ///
    /// `FAILURE` when the Mat is not initialised, the update or an exporter fails, the type cannot be
    /// written, or OpenCV throws (the last three are logged); `INVALID_FUNCTION_CALL` for another `mem`.
    /// OpenCV's own success flag is ignored.
    ERROR_CODE write(const String& path, MEM mem = MEM::CPU, int compression = -1);

    /// Replaces the content by a picture file, on the host, channels in OpenCV's order (blue, green, red,
    /// alpha). A picture of an unsupported type becomes `MAT_8U_C1` with the first width * height bytes.
    /// Name, time stamp and `extraFlag` stay. `FAILURE`, without a change, when the file cannot be decoded or
    /// memory cannot hold the picture; also, logged, when OpenCV throws. Throws nothing.
    ERROR_CODE read(const String& path);

    /// Bytes from row to row of one side, `CPU`, `GPU` or `MEM_MANAGED`; 0 for any other value.
    std::size_t getStepBytes(MEM mem = MEM::CPU) const;

    /// Copies the pixels from the first side of `type` here to its second side in `destination`. The
    /// destination is kept if it has this size, type and side, so that a reference writes through; otherwise
    /// it is allocated on the written side alone. It takes the time stamp over, also when the copy fails.
    /// Without a stream the copy is complete on return; on a stream it is queued, and the caller synchronises
    /// before touching either Mat. A destination that does not fit and owns pixels of the source is allocated
    /// anew once they are copied, which waits for the stream. A failed copy is printed and gives `FAILURE`.
    /// Throws as `alloc` does.
    ERROR_CODE copyTo(Mat& destination, COPY_TYPE type = COPY_TYPE::CPU_CPU,
                      cudaStream_t stream = nullptr) const;

    /// `copyTo` seen from the destination.
    ERROR_CODE setFrom(const Mat& source, COPY_TYPE type = COPY_TYPE::CPU_CPU, cudaStream_t stream = nullptr);

    /// Copies the device side to the host side, on `stream` as in `copyTo`. An owner with a device side alone
    /// gets a packed host buffer first; a managed buffer is handed to the host, and the stream is
    /// synchronised. A reference with one side may not grow a second: that is logged and gives `FAILURE`, as
    /// does a failed copy, which is printed.
    ERROR_CODE updateCPUfromGPU(cudaStream_t stream = nullptr);

    /// Copies the host side to the device side; the counterpart of `updateCPUfromGPU`. A managed buffer is
    /// attached to `stream`, which must not be null then, without waiting. `option` is not used.
    ERROR_CODE updateGPUfromCPU(cudaStream_t stream = nullptr, int option = 0);

private:
    void describe(std::size_t newWidth, std::size_t newHeight, MAT_TYPE type);
    void referTo(const Mat& source);
    void becomeEmpty();
    bool refersIntoOwner(const Mat& owner) const;
    void releaseManaged();
    void releaseHost();
    void releaseDevice();
};

}  // namespace vela
