#include "vela_core/types/detail/enum_cast.hpp"
#include "vela_core/types/detail/text_format.hpp"
#include "vela_core/utils/Mat.hpp"

#include <cstdint>
#include <iterator>

namespace vela {
namespace {

// Indexed by MAT_TYPE. "short" and "char" are the words for unsigned 16 bits and for signed bytes.
constexpr const char* ELEMENTS[] = {"float ", "float ", "float ", "float ", "uchar ",
                                    "uchar ", "uchar ", "uchar ", "short ", "char "};

const char* elementOf(MAT_TYPE type) {
    const auto index = static_cast<std::uint32_t>(toValue(type));
    return index < std::size(ELEMENTS) ? ELEMENTS[index] : "";
}

const char* sidesOf(MEM mem) {
    if (mem == MEM::CPU) return "CPU";
    if (mem == MEM::GPU) return "GPU";
    return mem == MEM_BOTH ? "both CPU and GPU" : "";
}

}  // namespace

String Mat::getInfos() const {
    const std::string label = labelOrAddress(name, this);
    if (!isInit) return label + " vela::Mat not initialised";
    return label +
           formatText(
               " Ts %llu vela::Mat of size [%zu,%zu], with %zu channels of type %sallocated on %s%s.\n",
               timestamp, width, height, channels, elementOf(dataType), sidesOf(memType),
               memoryOwner ? " (memory owned)" : " (reference only)");
}

}  // namespace vela
