// SPDX-License-Identifier: Apache-2.0
// Makes somebody's cloud of millimetres, as a camera sees them, one of metres, Z up and X forward.
#include <vela_core/vela.hpp>
#include <vela_io/io.hpp>

#include <iostream>

int main(int count, char** words) {
    if (count != 3) {
        std::cerr << "usage: convert_cloud THEIRS OURS\n";
        return 2;
    }
    vela::Mat cloud;
    vela::io::CloudReadOptions options;
    options.unit = vela::UNIT::MILLIMETER;  // the unit of their file, unless it states one
    options.axes = vela::COORDINATE_SYSTEM::IMAGE;
    options.targetUnit = vela::UNIT::METER;  // the unit of our file
    options.targetAxes = vela::COORDINATE_SYSTEM::RIGHT_HANDED_Z_UP_AND_X_FORWARD;
    vela::io::Result result = vela::io::readCloud(words[1], cloud, options);
    vela::io::CloudOptions writing;
    writing.unit = options.targetUnit;
    writing.axes = options.targetAxes;
    if (result.ok()) result = vela::io::writeCloud(cloud, words[2], writing);
    if (!result.ok()) std::cerr << result.text << '\n';
    return result.ok() ? 0 : 1;
}
