// SPDX-License-Identifier: Apache-2.0
#include "images.hpp"

#include "device.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>

namespace vela::bench {
namespace {

constexpr std::size_t ROTATED_BYTES = std::size_t{1} << 29;
constexpr std::size_t MOST_IMAGES = 64;
constexpr double USABLE_SHARE = 0.9;

using Row = std::vector<unsigned char>;

Row randomRow(std::size_t bytes) {
    std::mt19937 random(1);
    Row row(bytes);
    for (std::size_t at = 0; at < bytes; at += sizeof(float)) {
        const auto value = static_cast<float>(static_cast<std::int32_t>(random() % 16001) - 8000) / 1000;
        std::memcpy(&row[at], &value, std::min(sizeof value, bytes - at));
    }
    return row;
}

unsigned char* rowOf(const Mat& mat, std::size_t y) {
    return mat.ptrGPU + y * mat.stepBytesGPU;
}

/// Copies the first row into all others, doubling the filled part each time.
void fillRows(const Mat& mat, const Row& row) {
    require(cudaMemcpy(mat.ptrGPU, row.data(), row.size(), cudaMemcpyHostToDevice), "contents of an image");
    for (std::size_t done = 1; done < mat.height;) {
        const std::size_t rows = std::min(done, mat.height - done);
        require(cudaMemcpy2D(rowOf(mat, done), mat.stepBytesGPU, mat.ptrGPU, mat.stepBytesGPU, row.size(),
                             rows, cudaMemcpyDeviceToDevice),
                "contents of an image");
        done += rows;
    }
}

std::vector<Mat> allocate(std::size_t count, std::size_t width, std::size_t height, MAT_TYPE type) {
    std::vector<Mat> mats;
    for (std::size_t i = 0; i < count; ++i) {
        Mat& mat = mats.emplace_back(width, height, type, MEM::GPU);
        if (mat.ptrGPU == nullptr) std::exit(EXIT_FAILURE);  // alloc printed why
        fillRows(mat, randomRow(width * mat.pixelBytes));
    }
    return mats;
}

Row download(const Mat& mat, std::size_t y) {
    Row row(mat.width * mat.pixelBytes);
    require(cudaMemcpy(row.data(), rowOf(mat, y), row.size(), cudaMemcpyDeviceToHost), "a result");
    return row;
}

}  // namespace

Images::Images(const Case& kernel, std::size_t width, std::size_t height) : height_(height) {
    std::size_t available = 0;
    std::size_t total = 0;
    require(cudaMemGetInfo(&available, &total), "cudaMemGetInfo");
    const auto usable = static_cast<std::size_t>(static_cast<double>(available) * USABLE_SHARE);
    const std::size_t kinds = kernel.inPlace ? 1 : 2;
    // Rows of 3- and 12-byte pixels are padded to a multiple of 1536 bytes, others to less.
    const std::size_t step = (width * kernel.pixelBytes() + 1535) / 1536 * 1536;
    while (height_ > 2 && 2 * kinds * step * height_ > usable) {
        height_ /= 2;
    }
    const std::size_t size = step * height_;
    const std::size_t fitting = std::max<std::size_t>(usable / (kinds * size), 2);
    const std::size_t wanted = std::clamp<std::size_t>(ROTATED_BYTES / size, 2, MOST_IMAGES);
    const std::size_t count = std::min(wanted, fitting) / 2 * 2;
    images_ = allocate(count, width, height_, kernel.type);
    if (!kernel.inPlace) others_ = allocate(count, width, height_, kernel.type);
}

std::string findDifference(const Case& kernel, const Case::Launch& launch, const Images& images, unsigned n) {
    const Mat& before = images.image(n);
    const Mat& after = images.other(n);
    const std::size_t height = before.height;
    const Row row = download(before, height - 1);
    Row wanted(row.size());
    for (std::size_t at = 0; at < row.size(); at += before.pixelBytes) {
        kernel.element(&row[at], &wanted[at]);
    }
    launch(before, after, false);
    require(cudaGetLastError(), kernel.name.c_str());
    require(cudaDeviceSynchronize(), kernel.name.c_str());
    for (const std::size_t y : {std::size_t{0}, std::size_t{1}, height / 2, height - 2, height - 1}) {
        const Row seen = download(after, y);
        const auto at = std::mismatch(seen.begin(), seen.end(), wanted.begin()).first - seen.begin();
        if (static_cast<std::size_t>(at) == seen.size()) continue;
        return kernel.name + " at " + std::to_string(before.width) + "x" + std::to_string(height) + ": row " +
               std::to_string(y) + ", byte " + std::to_string(at) + " is wrong";
    }
    return {};
}

}  // namespace vela::bench
