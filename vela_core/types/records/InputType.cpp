// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/records/InputType.hpp"

#include "vela_core/types/detail/enum_table.hpp"

namespace vela {
using namespace detail;
namespace {

constexpr EnumName<INPUT_TYPE> INPUT_TYPE_NAMES[] = {
    {INPUT_TYPE::USB, "USB input type"},
    {INPUT_TYPE::QVR, "QVR input type"},
    {INPUT_TYPE::STREAM, "STREAM input type"},
};

}  // namespace

String toString(const INPUT_TYPE& value) {
    return nameIn(INPUT_TYPE_NAMES, value);
}

}  // namespace vela
