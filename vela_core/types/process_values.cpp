#include "vela_core/types/process_values.hpp"

#include "vela_core/types/detail/enum_cast.hpp"

namespace vela {
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

// One source and this order, so that each value is built after those before it.

const std::vector<std::pair<BODY_PARTS, BODY_PARTS>> BODY_BONES = bones<BODY_PARTS>({{0, 1},
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

const std::vector<std::pair<BODY_PARTS_POSE_34, BODY_PARTS_POSE_34>> BODY_BONES_POSE_34 =
    bones<BODY_PARTS_POSE_34>({{0, 1},   {1, 2},   {2, 4},   {4, 5},   {5, 6},   {6, 7},   {7, 8},
                               {8, 9},   {7, 10},  {2, 11},  {11, 12}, {12, 13}, {13, 14}, {14, 15},
                               {15, 16}, {14, 17}, {0, 18},  {18, 19}, {19, 20}, {20, 21}, {0, 22},
                               {22, 23}, {23, 24}, {24, 25}, {2, 3},   {3, 26},  {26, 27}, {27, 28},
                               {28, 29}, {27, 30}, {30, 31}, {20, 32}, {24, 33}, {32, 21}, {33, 25}});

const std::string INIT_PARAM_EXTENSION = ".yml";

std::random_device uuid::rd("default");
std::mt19937_64 uuid::gen(uuid::rd());
std::uniform_int_distribution<> uuid::dis(0, 15);
std::uniform_int_distribution<> uuid::dis2(8, 11);

namespace {

struct IdentifierText {
    // x is a digit, y the variant digit; the version digit and the dashes stand for themselves.
    char characters[37] = "xxxxxxxx-xxxx-4xxx-yxxx-xxxxxxxxxxxx";
};

IdentifierText drawIdentifier() {
    static constexpr char DIGITS[] = "0123456789abcdef";
    IdentifierText text;
    for (char& place : text.characters) {
        if (place == 'x') place = DIGITS[uuid::dis(uuid::gen)];
        if (place == 'y') place = DIGITS[uuid::dis2(uuid::gen)];
    }
    return text;
}

}  // namespace

std::string uuid::generate_uuid_v4() {
    return drawIdentifier().characters;
}

String generate_unique_id() {
    return drawIdentifier().characters;
}

}  // namespace vela
