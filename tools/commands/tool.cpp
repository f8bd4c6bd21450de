// SPDX-License-Identifier: Apache-2.0
#include "tools/commands/tool.hpp"

#include "tools/commands/commands.hpp"

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <exception>
#include <new>
#include <ostream>
#include <string>
#include <utility>

namespace vela::tools {

int runTool(int argc, const char* const* argv, std::ostream& out, std::ostream& err) {
    constexpr int TROUBLE = 2;
    const std::string program = argc > 0 ? argv[0] : "velatool";
    const std::string name = program.substr(program.rfind('/') + 1);
    const auto complain = [&](std::string text) {
        const std::size_t end = text.find('\n');
        if (end != std::string::npos) text.resize(end);
        err << name << ": " << text << std::endl;
        return TROUBLE;
    };
    try {
        CLI::App app(
            "Shows, converts, compares and draws point clouds and depth maps. \"-\" is standard input or "
            "output.",
            name);
        app.set_version_flag("--version", name + " " VELA_TOOL_VERSION);
        app.set_help_all_flag("--help-all", "Print the help of all commands and exit");
        app.require_subcommand(1);
        const Console console{out, err};
        const std::pair<std::string, Command> commands[] = {{"info", addInfo(app, console)},
                                                            {"convert", addConvert(app, console)},
                                                            {"view", addView(app, console)},
                                                            {"diff", addDiff(app, console)},
                                                            {"depth2cloud", addDepthToCloud(app, console)}};
        try {
            app.parse(argc, argv);
        } catch (const CLI::Success& asked) {
            return app.exit(asked, out, err);
        } catch (const CLI::ParseError& mistake) {
            return complain(mistake.what());
        }
        for (const auto& [command, run] : commands) {
            if (!app.got_subcommand(command)) continue;
            const int code = run();
            out.flush();
            return out ? code : complain("standard output: cannot be written");
        }
        return complain("no command");
    } catch (const std::bad_alloc&) {
        return complain("out of memory");
    } catch (const std::exception& mistake) {
        return complain(mistake.what());
    }
}

}  // namespace vela::tools
