// SPDX-License-Identifier: Apache-2.0
#include <opencv2/imgcodecs.hpp>

int main(int argc, char** argv) {
    return argc != 2 || cv::imread(argv[1], cv::IMREAD_UNCHANGED).empty();
}
