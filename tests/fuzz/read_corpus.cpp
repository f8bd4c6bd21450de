// SPDX-License-Identifier: Apache-2.0
// Writes a small picture of every kind that OpenCV encodes into the given folder.
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include <cstdio>
#include <string>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: read_corpus FOLDER\n");
        return 2;
    }
    int written = 0;
    for (const int type : {CV_8UC1, CV_8UC3, CV_8UC4, CV_16UC1, CV_16UC3, CV_32FC1, CV_32FC3}) {
        cv::Mat picture(5, 7, type);
        cv::randu(picture, 0, 200);
        for (const char* const extension : {"png", "jpg", "bmp", "tiff", "pgm", "ppm", "pbm", "pfm", "pam",
                                            "webp", "jp2", "hdr", "exr", "ras"}) {
            try {
                const std::string name = std::to_string(type) + "." + extension;
                written += cv::imwrite(argv[1] + ("/" + name), picture) ? 1 : 0;
            } catch (const cv::Exception&) {
                // This format cannot store such pixels.
            }
        }
    }
    return written > 0 ? 0 : 1;
}
