// SPDX-License-Identifier: Apache-2.0
// Makes the nth allocation by operator new of every operation fail, for every n: nothing leaks, the Mats are
// as documented, and only std::bad_alloc is thrown, and only by operations that allocate Mats.
#include "support/ScratchFolder.hpp"
#include "support/capture.hpp"
#include "support/exports.hpp"
#include "support/operations.hpp"

#include <opencv2/core/utils/logger.hpp>

#include <chrono>
#include <cstdlib>
#include <new>
#include <set>
#include <thread>
#include <utility>

namespace {

/// While armed, counts the allocations of this thread and makes one of them fail.
struct FailingNew {
    bool armed = false;
    int nth = 0;
    int live = 0;
};
thread_local FailingNew failing;

void* allocate(std::size_t size) {
    if (failing.armed) {
        if (--failing.nth == 0) throw std::bad_alloc();
        ++failing.live;
    }
    void* const memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

void release(void* memory) noexcept {
    if (failing.armed && memory != nullptr) --failing.live;
    std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) {
    return allocate(size);
}
void* operator new[](std::size_t size) {
    return allocate(size);
}
void operator delete(void* memory) noexcept {
    release(memory);
}
void operator delete[](void* memory) noexcept {
    release(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    release(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    release(memory);
}

namespace vela::test {
namespace {

class MemoryFaultsTest : public DeviceTest {
protected:
    enum class End { DONE, REFUSED, THROWN };

    /// Runs an action in which the nth allocation fails: returns whether it got so far and whether it threw.
    template <class Action>
    static End run(int nth, Action action) {
        const bool armed = std::exchange(failing.armed, true);
        failing.nth = nth;
        End end = End::DONE;
        try {
            action();
        } catch (const std::bad_alloc&) {
            end = End::THROWN;
        }
        if (end == End::DONE && failing.nth <= 0) end = End::REFUSED;
        failing.nth = 0;  // no other fails
        failing.armed = armed;
        return end;
    }

    /// Runs an operation on two Mats in which the nth allocation fails. Nothing may leak, and after an
    /// exception each Mat must be empty or unchanged.
    static End run(int nth, const Operation& operation, MEM mine, MEM other, const Arguments& arguments) {
        SCOPED_TRACE(testing::Message() << operation.name << ", allocation " << nth << ", sides "
                                        << toValue(mine) << " " << toValue(other));
        const std::size_t live = software_device::liveAllocations();
        End end{};
        failing = {true, 0, 0};
        {
            Mat mats[] = {Mat(4, 2, arguments.type, mine), Mat(4, 3, arguments.type, other)};
            const std::string before[] = {fieldsOf(mats[0]), fieldsOf(mats[1])};
            printedBy([&] { end = run(nth, [&] { operation.act(mats[0], mats[1], arguments); }); });
            for (int i = 0; end == End::THROWN && i < 2; ++i) {
                const Mat& mat = mats[i];
                const bool empty =
                    !mat.isInit && !mat.memoryOwner && mat.width + mat.height + mat.pixelBytes == 0;
                EXPECT_TRUE(empty || fieldsOf(mat) == before[i]) << fieldsOf(mat);
            }
        }
        failing.armed = false;
        EXPECT_EQ(software_device::liveAllocations(), live);
        EXPECT_EQ(failing.live, 0) << "leaked";
        software_device::reset();
        return end;
    }

    /// Waits, because the logger's thread briefly opens files too.
    static int settledDescriptors(int expected) {
        int open = openDescriptors();
        for (int tries = 0; open > expected && tries < 500; ++tries) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            open = openDescriptors();
        }
        return open;
    }

    ScratchFolder folder_;
};

TEST_F(MemoryFaultsTest, OperationsOnMatsLeakNothingAndThrowWhereTheyAllocate) {
    const std::set<std::string> allocating = {
        "alloc",   "copy and assign",  "swap",         "clone",       "copyTo",
        "setFrom", "updateCPUfromGPU", "convertImage", "convertUnit", "convertCoordinateSystem"};
    const Mat first(4, 2, F4, MEM_BOTH);  // what the device allocates once and keeps is no leak
    int points = 0;
    for (const Operation& operation : operations()) {
        for (const MEM mine : {MEM::CPU, MEM::GPU, MEM_BOTH, MEM_MANAGED}) {
            for (const MEM other : {MEM::CPU, MEM::GPU, MEM_BOTH}) {
                for (int copy = 0; copy < 4; ++copy) {
                    if (copy != 0 && (operation.uses & Operation::COPY) == 0) break;
                    Arguments arguments;
                    arguments.mem = MEM_BOTH;
                    arguments.copy = fromValue<COPY_TYPE>(copy);
                    arguments.type = std::string(operation.name) == "convertImage" ? U4 : F4;
                    End end = End::REFUSED;
                    for (int nth = 1; end != End::DONE && !HasFailure(); ++nth, ++points) {
                        end = run(nth, operation, mine, other, arguments);
                        EXPECT_TRUE(end != End::THROWN || allocating.count(operation.name) == 1)
                            << operation.name << " must not throw";
                    }
                }
            }
        }
    }
    EXPECT_GT(points, 400);
}

TEST_F(MemoryFaultsTest, FilesAreWholeOrABeginningAndReadingKeepsTheMat) {
    cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
    const Exports all(1000);
    Mat picture = filled(16, 16, U3, MEM::CPU);
    ASSERT_EQ(picture.write(folder_ / "kept.png"), OK);
    const LogCapture log;
    for (const Export& file : all.list) {
        const std::string path = folder_ / ("a" + file.extension);
        file.run(path);  // what is allocated once and kept is no leak
        EXPECT_TRUE(sameBytes(contentOf(path), file.whole)) << path;
        End end = End::REFUSED;
        for (int nth = 1; end != End::DONE; ++nth) {
            SCOPED_TRACE(path + ", allocation " + std::to_string(nth));
            fs::remove(path);
            const int descriptors = openDescriptors();
            bool saved = false;
            failing.live = 0;
            end = run(nth, [&] { saved = file.run(path); });
            EXPECT_EQ(failing.live, 0) << "leaked";
            EXPECT_LE(settledDescriptors(descriptors), descriptors);
            const std::string seen = fs::exists(path) ? contentOf(path) : "";
            EXPECT_TRUE(beginsLike(seen, file.whole));
            EXPECT_EQ(saved, seen == file.whole);
            if (HasFailure()) return;
        }
    }
    End end = End::REFUSED;
    for (int nth = 1; end != End::DONE && nth < 1000; ++nth) {
        Mat mat = filled(3, 2, F4, MEM_BOTH);
        mat.name = "kept";
        ERROR_CODE result = OK;
        const String path(folder_ / "kept.png");
        end = run(nth,
                  [&] { result = mat.read(path); });  // OpenCV itself forgets its file when memory is short
        EXPECT_NE(end, End::THROWN);
        if (result == OK) {
            EXPECT_TRUE(sameBytes(load(mat, MEM::CPU), pattern(16 * 16 * 3)));
        } else {
            EXPECT_TRUE(sameBytes(load(mat, MEM::GPU), pattern(96))) << "what was there stays";
        }
        if (HasFailure()) return;
    }
    EXPECT_EQ(end, End::DONE);
}

}  // namespace
}  // namespace vela::test
