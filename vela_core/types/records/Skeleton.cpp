// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/records/Skeleton.hpp"

#include "vela_core/types/detail/enum_cast.hpp"
#include "vela_core/types/detail/start_order.hpp"

#include <initializer_list>

namespace vela {
using namespace detail;
namespace {

/// Pairs of keypoints from pairs of their indices.
template <class Part>
std::vector<std::pair<Part, Part>> bones(std::initializer_list<std::pair<int, int>> indices) {
    std::vector<std::pair<Part, Part>> result;
    result.reserve(indices.size());
    for (const auto& [first, second] : indices) {
        result.emplace_back(fromValue<Part>(first), fromValue<Part>(second));
    }
    return result;
}

}  // namespace

[[gnu::init_priority(START_BONES)]] const std::vector<std::pair<BODY_PARTS, BODY_PARTS>> BODY_BONES =
    bones<BODY_PARTS>({{0, 1},
                       {1, 2},
                       {2, 3},
                       {3, 4},
                       {1, 5},
                       {5, 6},
                       {6, 7},
                       {2, 8},
                       {8, 9},
                       {9, 10},
                       {5, 11},
                       {11, 12},
                       {12, 13},
                       {2, 5},
                       {8, 11},
                       {0, 14},
                       {14, 16},
                       {0, 15},
                       {15, 17}});

[[gnu::init_priority(START_BONES)]] const std::vector<std::pair<BODY_PARTS_POSE_34, BODY_PARTS_POSE_34>>
    BODY_BONES_POSE_34 = bones<BODY_PARTS_POSE_34>(
        {{0, 1},   {1, 2},   {2, 4},   {4, 5},   {5, 6},   {6, 7},   {7, 8},   {8, 9},  {7, 10},
         {2, 11},  {11, 12}, {12, 13}, {13, 14}, {14, 15}, {15, 16}, {14, 17}, {0, 18}, {18, 19},
         {19, 20}, {20, 21}, {0, 22},  {22, 23}, {23, 24}, {24, 25}, {2, 3},   {3, 26}, {26, 27},
         {27, 28}, {28, 29}, {27, 30}, {30, 31}, {20, 32}, {24, 33}, {32, 21}, {33, 25}});

}  // namespace vela
