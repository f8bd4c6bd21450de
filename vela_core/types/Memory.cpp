// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/Memory.hpp"

#include "vela_core/types/detail/enum_table.hpp"

namespace vela {
using namespace detail;
namespace {

constexpr EnumName<MEM> MEM_NAMES[] = {
    {MEM::CPU, "CPU"},
    {MEM::GPU, "GPU"},
};

constexpr EnumName<COPY_TYPE> COPY_TYPE_NAMES[] = {
    {COPY_TYPE::CPU_CPU, "CPU CPU"},
    {COPY_TYPE::CPU_GPU, "CPU GPU"},
    {COPY_TYPE::GPU_GPU, "GPU GPU"},
    {COPY_TYPE::GPU_CPU, "GPU CPU"},
};

}  // namespace

String toString(const MEM& value) {
    return nameIn(MEM_NAMES, value);
}

String toString(const COPY_TYPE& value) {
    return nameIn(COPY_TYPE_NAMES, value);
}

}  // namespace vela
