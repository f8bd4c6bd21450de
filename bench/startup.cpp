// SPDX-License-Identifier: Apache-2.0
// What it costs to start a program that uses the library, and to compile one.
#include "support/Session.hpp"
#include "support/children.hpp"
#include "support/files.hpp"

#include <vela_core/vela.hpp>

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace vela;
using bench::Comparison;
using bench::Session;

using Command = std::vector<std::string>;

/// A contender that runs a command, and the check that the command succeeds.
struct Program {
    Command command;

    void operator()() const { bench::runProgram(command); }
    bench::Check check() const {
        return [command = command] {
            return bench::runProgram(command) == 0 ? std::string() : command.front() + " failed";
        };
    }
};

Program starter(const std::string& name, const Command& arguments = {}) {
    Command command = {std::string(VELA_BENCH_STARTERS) + "/bench_starter_" + name};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return {command};
}

/// Parses a source that includes one header.
Program parse(const std::string& folder, const std::string& name, const std::string& include) {
    const std::string source = folder + '/' + name + ".cpp";
    std::ofstream(source) << include << "\nint main() {}\n";
    std::istringstream includes(VELA_BENCH_INCLUDES);
    Command command = {VELA_BENCH_COMPILER, "-std=c++17", "-fsyntax-only", source};
    command.insert(command.end(), std::istream_iterator<std::string>(includes), {});
    return {command};
}

void start(Session& session, const std::string& folder) {
    const Program ours = starter("mat");
    const Program nothing = starter("nothing");
    Comparison mat("start a program that uses Mat");
    mat.byWallClock().ours(ours, ours.check()).limit("empty program", nothing, nothing.check());
    session.run(mat);

    const std::string picture = folder + "/picture.png";
    Mat small(16, 16, MAT_TYPE::MAT_8U_C3);
    small.setTo(Vector3<unsigned char>(1, 2, 3));
    small.write(picture.c_str());
    const Program reading = starter("read", {picture});
    const Program imread = starter("imread", {picture});
    Comparison read("start a program that reads a picture");
    read.byWallClock()
        .ours(reading, reading.check())
        .peer("cv::imread", imread, imread.check())
        .limit("empty program", nothing, nothing.check());
    session.run(read);
}

void compile(Session& session, const std::string& folder) {
    const Program ours = parse(folder, "vela", "#include <vela_core/vela.hpp>");
    const Program opencv = parse(folder, "opencv", "#include <opencv2/core.hpp>");
    const Program eigen = parse(folder, "eigen", "#include <Eigen/Dense>");
    const Program nothing = parse(folder, "nothing", "");
    Comparison comparison("parse the one header");
    comparison.byWallClock()
        .ours(ours, ours.check())
        .peer("opencv2/core.hpp", opencv, opencv.check())
        .peer("Eigen/Dense", eigen, eigen.check())
        .limit("empty source", nothing, nothing.check());
    session.run(comparison);
}

void runAll(Session& session) {
    const bench::ScratchFolder scratch(bench::memoryFolder());
    const std::string folder = scratch / ".";
    start(session, folder);
    compile(session, folder);
}

}  // namespace

int main(int argc, char** argv) {
    return bench::measure(argc, argv, {9, 0.01}, runAll);
}
