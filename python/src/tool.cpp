// SPDX-License-Identifier: Apache-2.0
// python -m vela: the commands of velatool.
#include "bindings.hpp"

#include "tools/commands/tool.hpp"

#include <iostream>
#include <string>
#include <vector>

namespace vela::python {
namespace {

int runTool(const nb::sequence& words) {
    std::vector<std::string> texts;
    for (const nb::handle word : words) {
        const auto bytes = nb::cast<nb::bytes>(word);
        texts.emplace_back(bytes.c_str(), bytes.size());
    }
    std::vector<const char*> argv;
    argv.reserve(texts.size());
    for (const std::string& text : texts)
        argv.push_back(text.c_str());
    const nb::gil_scoped_release released;
    return tools::runTool(static_cast<int>(argv.size()), argv.data(), std::cout, std::cerr);
}

}  // namespace

void bindTool(nb::module_& module) {
    module.def(
        "run_tool", &runTool, "words"_a,
        nb::sig("def run_tool(words: collections.abc.Sequence[bytes]) -> int"),
        "Runs a command line of velatool, the program's name first, on the process's standard streams;\n"
        "returns the exit code.");
}

}  // namespace vela::python
