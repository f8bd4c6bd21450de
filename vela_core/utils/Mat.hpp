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
/// (two buffers, synchronised by explicit copies), or in one CUDA managed buffer.
///
/// A Mat either owns its buffers (`alloc`, `clone`, `move` into it) and releases them in `free` and on
/// destruction, or refers to buffers owned elsewhere (`ref`, copies, wrapped memory) and never releases them;
/// the owner must then outlive it. Copying and assigning make references; the deep copies are `clone`,
/// `copyTo` and `setFrom`.
///
/// Mats may share buffers: assigning to an owner from a reference into its own buffers changes nothing, and
/// copies read their source before they release anything. A reference is not notified when its owner releases
/// or replaces the buffers: it then dangles, as a pointer would. This includes references to an owner that
/// becomes the destination of a copy which does not fit it.
///
/// A side holds `height` rows; row y starts y steps after its pointer. Owned host and managed rows are
/// packed, owned device rows are pitched. There is no lock: one Mat is used by one thread at a time.
class Mat {
public:
    std::size_t width = 0;         ///< pixels in a row
    std::size_t height = 0;        ///< rows
    std::size_t channels = 0;      ///< channels of a pixel
    std::size_t stepBytesGPU = 0;  ///< bytes from row to row of the device buffer
    /// Bytes from row to row of the host buffer. `alloc` sets the packed step even without a host buffer.
    std::size_t stepBytesCPU = 0;
    std::size_t pixelBytes = 0;                ///< bytes of a pixel, all channels
    MAT_TYPE dataType = MAT_TYPE::MAT_32F_C1;  ///< pixel type
    MEM memType = MEM::CPU;                    ///< side or sides of the data
    unsigned char* ptrCPU = nullptr;           ///< first row of the host side
    unsigned char* ptrGPU = nullptr;           ///< first row of the device side; host code must not read it
    bool isInit = false;                       ///< whether the fields describe usable data
    bool memoryOwner = false;                  ///< whether this Mat releases the buffers
    String name = "n/a";                       ///< label in messages; only C++ moves carry it to another Mat
    bool extraFlag = false;                    ///< carried by `move`; not used by the library
    unsigned long long timestamp = 0;          ///< capture time in nanoseconds

    /// An empty Mat.
    Mat() = default;

    /// Calls `alloc` with the same arguments.
    Mat(std::size_t width, std::size_t height, MAT_TYPE type, MEM mem = MEM::CPU);
    /// @overload
    Mat(Resolution resolution, MAT_TYPE type, MEM mem = MEM::CPU);

    /// Refers to the caller's buffer on side `mem`, `CPU` or `GPU`, with rows `step` bytes apart.
    Mat(std::size_t width, std::size_t height, MAT_TYPE type, unsigned char* ptr, std::size_t step, MEM mem);
    /// @overload
    Mat(Resolution resolution, MAT_TYPE type, unsigned char* ptr, std::size_t step, MEM mem);

    /// Refers to the caller's host and device buffers, as `MEM_BOTH`.
    Mat(std::size_t width, std::size_t height, MAT_TYPE type, unsigned char* ptrCPU, std::size_t stepCPU,
        unsigned char* ptrGPU, std::size_t stepGPU);
    /// @overload
    Mat(Resolution resolution, MAT_TYPE type, unsigned char* ptrCPU, std::size_t stepCPU,
        unsigned char* ptrGPU, std::size_t stepGPU);

    /// `ref(source)`: a copy refers to the same buffers.
    Mat(const Mat& source);
    /// `ref(source)`.
    Mat& operator=(const Mat& source);

    /// Takes over the buffers of an owner, as `move` does, or refers to the same buffers as a reference, and
    /// takes the name in both cases; the source's name is then empty.
    Mat(Mat&& source) noexcept;
    /// The same. Assigning to an owner from a reference into its own buffers changes neither of the two.
    Mat& operator=(Mat&& source) noexcept;

    ~Mat();

    /// Releases the buffers that this Mat owned and allocates uninitialised ones on the side or sides of
    /// `mem`; `type` sets `channels` and `pixelBytes` (0 for an unknown type). Nothing is returned: a failed
    /// device allocation and a `mem` above `MEM_MANAGED` are printed on standard output, and the Mat then
    /// claims to be initialised and owning with null pointers. A failed host allocation throws
    /// `std::bad_alloc` and leaves an empty Mat. A size in bytes that does not fit into `size_t` is a failed
    /// allocation. Device rows of 3- and 12-byte pixels get a pitch that is a whole number of pixels.
    void alloc(std::size_t width, std::size_t height, MAT_TYPE type, MEM mem = MEM::CPU);
    /// @overload
    void alloc(Resolution resolution, MAT_TYPE type, MEM mem = MEM::CPU);

    /// Releases one side or both; managed memory is always released as a whole. With one of two sides left
    /// the Mat stays initialised and owning; otherwise its sizes become 0. For a reference only the sizes are
    /// reset. A device buffer that cannot be freed is printed and logged.
    void free(MEM mem = MEM_BOTH);

    /// Calls `free` and makes this Mat a reference to the buffers of `source`; an empty source leaves it
    /// empty. So `m.ref(m)` empties m. A source that refers into buffers of this Mat changes nothing. The
    /// name stays.
    void ref(const Mat& source);

    /// Deep copy of `source` into new buffers on the same sides, with its time stamp but not its name. Sizes
    /// are limited to 2^31 - 1. Cloning itself, or a reference to its own whole buffers, copies the time
    /// stamp only. Returns `FAILURE` without a change when the source is not initialised; failed copies are
    /// printed but still return `SUCCESS`. Throws as `alloc` does.
    ///
    /// From 32 MiB on (1920x1200 pixels of four floats) the C library takes fresh pages from the kernel for
    /// each buffer, which costs several times the copy. For a stream of frames keep one Mat and
    /// `copyTo` it, or start the program with GLIBC_TUNABLES=glibc.malloc.hugetlb=1.
    ERROR_CODE clone(const Mat& source);

    /// Hands buffers and ownership to `destination`, which releases its own first and keeps its name.
    /// Returns `FAILURE` without a change when this Mat does not own its memory.
    ERROR_CODE move(Mat& destination);

    /// Exchanges two owning Mats, but not their names, by three moves through a temporary. References cannot
    /// be moved: if `a` is one, it receives the buffers of `b`, and `b` becomes empty; if `b` is one, it
    /// stays as it is, and `a` becomes empty.
    static void swap(Mat& a, Mat& b);

    /// @name Pixels
    /// The pixel type N is one of float, unsigned char, unsigned short, Vector2, Vector3 and Vector4 of float
    /// and of unsigned char, and Vector4<char>; any other type stops the compiler with a message that lists
    /// them. Where the pixel is checked at run time, only its size must match the Mat's pixels, so that one
    /// packed float can set four bytes. Host pixels are addressed as packed, whatever the step; device pixels
    /// by whole pixels of the step.
    /// @{

    /// Sets every pixel of one side, `CPU` or `GPU`; call it twice for both. The device is filled on the null
    /// stream, without waiting. Returns `FAILURE` without a change for another `mem`, a side that the Mat
    /// does not have, another pixel size, or a Mat that is not initialised.
    template <class N, class = typename detail::RequirePixel<N>::type>
    ERROR_CODE setTo(N value, MEM mem = MEM::CPU);

    /// Sets the pixel (x, y) of one side, `CPU` or `GPU`; on the device by a copy that is complete on return.
    /// Neither bounds nor pixel size are checked. Returns `FAILURE` for another `mem`, a side that the Mat
    /// does not have, or a Mat that is not initialised. A failed copy is printed but still returns `SUCCESS`.
    template <class N, class = typename detail::RequirePixel<N>::type>
    ERROR_CODE setValue(std::size_t x, std::size_t y, N value, MEM mem = MEM::CPU);

    /// Reads the pixel (x, y) of one side, `CPU` or `GPU`; from the device by a copy that is complete on
    /// return. Zeroes `value` first. Returns `FAILURE` for another `mem`, a side that the Mat does not have,
    /// a pixel outside the image, another pixel size, or a Mat that is not initialised. A failed copy is
    /// printed but still returns `SUCCESS`.
    template <class N, class = typename detail::RequirePixel<N>::type>
    ERROR_CODE getValue(std::size_t x, std::size_t y, N* value, MEM mem = MEM::CPU) const;

    /// Pointer to the first pixel of one side, `CPU`, `GPU` or `MEM_MANAGED`, unchecked, and writable unless
    /// N is const; null for other values.
    template <class N, class = typename detail::RequirePixel<std::remove_const_t<N>>::type>
    N* getPtr(MEM mem = MEM::CPU) const {
        if (mem == MEM::CPU) return reinterpret_cast<N*>(ptrCPU);
        if (mem == MEM::GPU || mem == MEM_MANAGED) return reinterpret_cast<N*>(ptrGPU);
        return nullptr;
    }
    /// @}

    /// Whether the Mat is initialised and has a host side: `memType` is `CPU`, `MEM_BOTH` or `MEM_MANAGED`.
    bool isOnHost() const noexcept {
        return isInit && (memType == MEM::CPU || memType == MEM_BOTH || memType == MEM_MANAGED);
    }

    /// Whether the Mat is initialised and has a device side: `memType` is `GPU`, `MEM_BOTH` or `MEM_MANAGED`.
    bool isOnDevice() const noexcept {
        return isInit && (memType == MEM::GPU || memType == MEM_BOTH || memType == MEM_MANAGED);
    }

    /// One line that describes the Mat, for logs: its name, or its address if it has none, then time stamp,
    /// size, channels, element type, sides and ownership, ended by ".\n".
    String getInfos() const;

    /// Writes the Mat to a file. The pixel type and the extension of `path` (lower case, at most four
    /// characters after the last ".") choose its format:
    ///
    /// | pixel type | written by | formats |
    /// |---|---|---|
    /// | `MAT_32F_C1` | `saveDepthAs` with factor 1 | "png", "pgm", otherwise PFM |
    /// | `MAT_32F_C3` | `savePointCloudAs` without colour | "ply", "vtk", "xyz", otherwise PCD |
    /// | `MAT_32F_C4` | `savePointCloudAs` with colour | "ply", "vtk", "xyz", otherwise PCD |
    /// | `MAT_8U_C1`, `C3`, `C4`, `MAT_8S_C4` | OpenCV, channels in the Mat's order | those of OpenCV |
    /// | `MAT_US16_C1` | OpenCV | "png" |
    ///
    /// The exporters add their extension if it is missing. They read a `MAT_32F_C3` cloud as packed groups of
    /// four floats, as if it were `MAT_32F_C4`, so the file does not hold its points: convert it to four
    /// floats per pixel first.
    ///
    /// @param path the file
    /// @param mem `CPU`, or `GPU` to copy the device side to the host first
    /// @param compression 0 to 100: a tenth of it is the level of a "png", 100 minus it the quality of a
    /// "jpg"; -1 stands for 30 (level 3) and 5 (quality 95)
    ///
    /// @retval FAILURE the Mat is not initialised, the copy to the host fails, or, logged, an exporter fails,
    /// the type cannot be written, or OpenCV throws
    /// @retval INVALID_FUNCTION_CALL another `mem`
    /// @retval SUCCESS otherwise: OpenCV's own success flag is ignored
    ERROR_CODE write(const String& path, MEM mem = MEM::CPU, int compression = -1);

    /// Replaces the content by a picture file, on the host, channels in OpenCV's order (blue, green, red,
    /// alpha). A picture of an unsupported type becomes `MAT_8U_C1` with the first width * height bytes.
    /// Name, time stamp and `extraFlag` stay. Returns `FAILURE` without a change when the file cannot be
    /// decoded or does not fit into memory and, logged, when OpenCV throws. Throws nothing.
    ERROR_CODE read(const String& path);

    /// Bytes from row to row of one side, `CPU`, `GPU` or `MEM_MANAGED`; 0 for any other value.
    std::size_t getStepBytes(MEM mem = MEM::CPU) const;

    /// Copies the pixels from the first side that `type` names, in this Mat, to the second, in `destination`.
    /// The destination is kept if it has this size, pixel type and side, so that a reference writes through;
    /// otherwise it is allocated anew, on the written side only. It gets the time stamp even if the copy
    /// fails. Without a stream the copy is complete on return; on a stream it is queued, and the caller must
    /// synchronise before using either Mat. If the destination does not fit and owns the source's pixels, it
    /// keeps them until they are copied, which waits for the stream. A failed copy is printed and returns
    /// `FAILURE`. Throws as `alloc` does.
    ERROR_CODE copyTo(Mat& destination, COPY_TYPE type = COPY_TYPE::CPU_CPU,
                      cudaStream_t stream = nullptr) const;

    /// `source.copyTo(*this, type, stream)`.
    ERROR_CODE setFrom(const Mat& source, COPY_TYPE type = COPY_TYPE::CPU_CPU, cudaStream_t stream = nullptr);

    /// Copies the device side to the host side, on `stream` as in `copyTo`. An owner that has only a device
    /// side gets a packed host buffer first; a managed buffer is attached to the host, and the stream is
    /// synchronised. A reference with one side cannot get a second: that is logged and returns `FAILURE`, as
    /// does a failed copy, which is printed.
    ERROR_CODE updateCPUfromGPU(cudaStream_t stream = nullptr);

    /// Copies the host side to the device side; the counterpart of `updateCPUfromGPU`. A managed buffer is
    /// attached to `stream`, which must then not be null, without waiting. `option` is ignored.
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
