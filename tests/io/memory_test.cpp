// SPDX-License-Identifier: Apache-2.0
// Besides the Mat, files of any size take at most 4 MB of memory, except for compressed PCD files.
#include "support/ScratchFolder.hpp"
#include "support/cloud_kinds.hpp"
#include "vela_io/io.hpp"

#include <malloc.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <new>
#include <random>

namespace vela::io {
namespace {

using test::ScratchFolder;
using namespace std::string_literals;

constexpr std::size_t MOST = std::size_t{4} << 20;

/// A size of this process in bytes, as the kernel counts it.
std::size_t sizeOfProcess(const std::string& key) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        std::size_t kilobytes = 0;
        if (word == key + ":" && status >> kilobytes) return kilobytes * 1024;
    }
    return 0;
}

/// The peak memory of `work` in bytes, measured in a separate process.
std::size_t peakOf(const std::function<bool()>& work) {
    void* const shared =
        mmap(nullptr, sizeof(std::size_t), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    auto* const peak = new (shared) std::size_t(0);
    const pid_t child = fork();
    if (child == 0) {
        mallopt(M_MMAP_THRESHOLD, 1 << 16);  // large blocks are returned to the kernel when freed
        malloc_trim(0);
        const std::size_t before = sizeOfProcess("VmSize");
        const bool asExpected = work();
        *peak = sizeOfProcess("VmPeak") - before;
        _exit(asExpected && before > 0 ? 0 : 1);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    const std::size_t bytes = *peak;
    munmap(shared, sizeof(std::size_t));
    return bytes;
}

class MemoryTest : public testing::Test {
protected:
    void SetUp() override {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        GTEST_SKIP() << "the sanitizer takes memory of its own";
#endif
    }
    ScratchFolder folder_;
};

TEST_F(MemoryTest, WritingAndReadingAllocateLittleBesideTheMat) {
    Mat cloud(1280, 720, MAT_TYPE::MAT_32F_C4);
    Mat depth(2560, 1440, MAT_TYPE::MAT_32F_C1);
    std::mt19937 random(1);  // NOLINT(cert-msc51-cpp): the same every time
    for (std::size_t i = 0; i < depth.width * depth.height; ++i) {
        cloud.getPtr<float>()[i] = depth.getPtr<float>()[i] =
            std::uniform_real_distribution<float>(1, 60)(random);
    }
    const std::size_t matBytes = cloud.stepBytesCPU * cloud.height;
    const auto expectLittle = [&](const std::string& name, const std::function<bool()>& write) {
        EXPECT_LT(peakOf(write), MOST) << "writing " << name;
        EXPECT_LT(peakOf([&] {
                      Mat back;
                      const std::string path = folder_ / name;
                      const bool isCloud = kindOf(path) == FILE_KIND::CLOUD;
                      return (isCloud ? readCloud(path, back) : readDepth(path, back)).ok() &&
                             back.stepBytesCPU * back.height == matBytes;
                  }),
                  matBytes + MOST)
            << "reading " << name;
    };
    for (const test::CloudKind& kind : test::CLOUD_KINDS) {
        if (kind.encoding == ENCODING::BINARY_COMPRESSED) continue;
        CloudOptions options;
        options.encoding = kind.encoding;
        expectLittle(kind.name, [&] { return writeCloud(cloud, folder_ / kind.name, options).ok(); });
    }
    for (const char* const name : {"a.png", "a.pgm", "ascii.pgm", "a.pfm", "a.npy"}) {
        DepthOptions options;
        if (name[1] == 's') options.encoding = ENCODING::ASCII;
        expectLittle(name, [&] { return writeDepth(depth, folder_ / name, options).ok(); });
    }
}

TEST_F(MemoryTest, FilesThatClaimTooMuchAllocateLittle) {
    const std::string xyz = "property float x\nproperty float y\nproperty float z\nend_header\n";
    const std::string pcd = "FIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nWIDTH 2000000000\nDATA ";
    const std::pair<const char*, std::string> files[] = {
        {"a.ply", "ply\nformat binary_little_endian 1.0\nelement vertex 2000000000\n" + xyz + "123"},
        {"b.ply", "ply\nformat ascii 1.0\nelement vertex 2000000000\n" + xyz + "1 2 3\n"},
        {"a.pcd", pcd + "binary\n123"},
        {"b.pcd", pcd + "ascii\n1 2 3\n"},
        {"c.pcd", pcd + "binary_compressed\n" + "\xff\xff\xff\x7f" + "\xff\xff\xff\x7f" + "123"},
        {"a.vtk",
         "# vtk DataFile Version 3.0\nt\nBINARY\nDATASET POLYDATA\nPOINTS 2000000000 float\n123456789012"},
        {"a.pgm", "P5 2000000000 1 65535\n12"},
        {"b.pgm", "P2 2000000000 1 65535\n1 2"},
        {"a.pfm", "Pf 2000000000 1 -1\n1234"},
        {"a.npy",
         "\x93NUMPY\x01\x00\x46\x00{'descr': '<f4', 'fortran_order': False, 'shape': (2000000000, 1), } "s +
             "\n1234"},
        // Chunks of a gigabyte: one row of a very wide picture, and a text.
        {"a.png", "\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR\x40\0\0\0\0\0\0\x01\x10\0\0\0\0\x38\xa1\xbd\x83"s},
        {"b.png",
         "\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR\0\0\0\x03\0\0\0\x02\x10\0\0\0\0\xe8\x8f\xe5\x85\x40\0\0\0tEXtunit\0m"s},
    };
    for (const auto& [name, content] : files) {
        const std::string path = folder_ / name;
        test::put(path, content);
        EXPECT_LT(
            peakOf([&path = path] {
                Mat mat;
                return !(kindOf(path) == FILE_KIND::CLOUD ? readCloud(path, mat) : readDepth(path, mat)).ok();
            }),
            MOST)
            << name;
    }
}

}  // namespace
}  // namespace vela::io
