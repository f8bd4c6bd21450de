// SPDX-License-Identifier: Apache-2.0
// The time for which log statements hold up the thread that logs. The backend's later work does not
// count.
#include "support/Session.hpp"

#include "vela_core/log/KLogger.hpp"
#include "vela_core/log/detail/statements.hpp"

#include <quill/Frontend.h>
#include <quill/LogMacros.h>
#include <quill/sinks/Sink.h>
#include <spdlog/async.h>
#include <spdlog/async_logger.h>
#include <spdlog/sinks/base_sink.h>

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace vela;
using bench::Comparison;
using bench::Session;
using detail::logError;
using detail::LogStatement;

// So few that no queue grows or fills up.
constexpr int BATCH = 256;

/// Counts the messages and keeps the last one. The backend writes it; others read it only after a
/// flush.
struct Arrivals {
    int count = 0;
    std::string last;

    void add(std::string_view message) {
        ++count;
        last.assign(message);
    }
};

class QuillSink : public quill::Sink {
public:
    Arrivals arrivals;

    void write_log(quill::MacroMetadata const*, std::uint64_t, std::string_view, std::string_view,
                   std::string const&, std::string_view, quill::LogLevel, std::string_view, std::string_view,
                   std::vector<std::pair<std::string, std::string>> const*, std::string_view message,
                   std::string_view) override {
        arrivals.add(message);
    }
    void flush_sink() override {}
};

class SpdlogSink : public spdlog::sinks::base_sink<std::mutex> {
public:
    Arrivals arrivals;
    std::atomic<bool> flushed{false};

protected:
    void sink_it_(const spdlog::details::log_msg& message) override {
        arrivals.add({message.payload.data(), message.payload.size()});
    }
    void flush_() override { flushed = true; }
};

/// The library's logger, a plain quill logger and a spdlog logger.
struct Loggers {
    static constexpr const char* CORE = "core";

    Loggers() {
        auto& registered = KLogger::get_instance().loggers;  // starts quill's backend
        const auto make = [](const char* name) {
            return quill::Frontend::create_or_get_logger(
                name, quill::Frontend::create_or_get_sink<QuillSink>(name));
        };
        ours = make("bench.ours");
        registered[LOGGER_NAME::CORE] = ours;
        byName[CORE] = make("bench.quill");
        direct = make("bench.direct");

        spdlog::init_thread_pool(8192, 1);
        spdlogSink = std::make_shared<SpdlogSink>();
        spd = std::make_shared<spdlog::async_logger>("bench", spdlogSink, spdlog::thread_pool(),
                                                     spdlog::async_overflow_policy::block);
    }

    void forgetArrivals() const {
        for (const char* const name : {"bench.ours", "bench.quill", "bench.direct"}) {
            arrivalsOf(name) = {};
        }
        spdlogSink->arrivals = {};
    }
    void settleSpdlog() const {
        spdlogSink->flushed = false;
        spd->flush();
        while (!spdlogSink->flushed) {
            std::this_thread::yield();
        }
    }
    static Arrivals& arrivalsOf(const char* name) {
        auto sink = quill::Frontend::create_or_get_sink<QuillSink>(name);
        return static_cast<QuillSink&>(*sink).arrivals;
    }

    quill::Logger* ours = nullptr;
    quill::Logger* direct = nullptr;
    std::map<std::string, quill::Logger*> byName;
    std::shared_ptr<spdlog::async_logger> spd;
    std::shared_ptr<SpdlogSink> spdlogSink;
};

template <class Statement>
auto batchOf(Statement statement) {
    return [statement] {
        for (int i = 0; i < BATCH; ++i) {
            statement();
        }
    };
}

bench::Check expects(Arrivals& arrivals, int count) {
    return [&arrivals, count] {
        if (arrivals.count != count) return std::to_string(arrivals.count) + " messages arrived";
        const std::string expected = "[Mat]  in read : no such picture";
        return count == 0 || arrivals.last == expected ? std::string() : "the message is " + arrivals.last;
    };
}

/// The same statement to all loggers.
struct Statements {
    static constexpr const char* DETAIL = "no such picture";

    explicit Statements(const Loggers& loggers)
        : byName(loggers.byName), direct(*loggers.direct), spd(*loggers.spd) {}

    auto ours() const {
        return [] { logError(LogStatement::READ_EXCEPTION, DETAIL); };
    }
    auto bySpdlog() const {
        return [this] { spd.error("{} in {} : {}", "[Mat] ", "read", DETAIL); };
    }
    auto byNamedQuill() const {
        return [this] {
            quill::Logger* const logger = byName.find(Loggers::CORE)->second;
            LOG_ERROR(logger, "{} in {} : {}", "[Mat] ", "read", DETAIL);
        };
    }
    auto byDirectQuill() const {
        return [this] { LOG_ERROR(&direct, "{} in {} : {}", "[Mat] ", "read", DETAIL); };
    }

    const std::map<std::string, quill::Logger*>& byName;
    quill::Logger& direct;
    spdlog::async_logger& spd;
};

void fire(Session& session, const Loggers& loggers) {
    const Statements statements(loggers);
    const auto flush = [](quill::Logger* logger) { return [logger] { logger->flush_log(); }; };
    quill::Logger* const named = loggers.byName.at(Loggers::CORE);

    Comparison comparison("log statement");
    comparison.repeats(BATCH)
        .before([&] { loggers.forgetArrivals(); })
        .addSettled("ours", batchOf(statements.ours()), flush(loggers.ours),
                    expects(Loggers::arrivalsOf("bench.ours"), BATCH))
        .addSettled(
            "peer:spdlog async", batchOf(statements.bySpdlog()), [&] { loggers.settleSpdlog(); },
            expects(loggers.spdlogSink->arrivals, BATCH))
        .addSettled("peer:quill by name", batchOf(statements.byNamedQuill()), flush(named),
                    expects(Loggers::arrivalsOf("bench.quill"), BATCH))
        .addSettled("limit:quill at hand", batchOf(statements.byDirectQuill()), flush(loggers.direct),
                    expects(Loggers::arrivalsOf("bench.direct"), BATCH));
    session.run(comparison);
}

void suppress(Session& session, const Loggers& loggers) {
    quill::Logger* const named = loggers.byName.at(Loggers::CORE);
    for (quill::Logger* const logger : {loggers.ours, loggers.direct, named}) {
        logger->set_log_level(quill::LogLevel::Critical);
    }
    loggers.spd->set_level(spdlog::level::critical);
    const Statements statements(loggers);
    const auto flushed = [&](quill::Logger* logger, const char* name) -> bench::Check {
        return [=] {
            logger->flush_log();
            return expects(Loggers::arrivalsOf(name), 0)();
        };
    };

    Comparison comparison("log statement below the level");
    comparison.repeats(BATCH)
        .before([&] { loggers.forgetArrivals(); })
        .ours(batchOf(statements.ours()), flushed(loggers.ours, "bench.ours"))
        .peer("spdlog async", batchOf(statements.bySpdlog()), expects(loggers.spdlogSink->arrivals, 0))
        .peer("quill by name", batchOf(statements.byNamedQuill()), flushed(named, "bench.quill"))
        .limit("quill at hand", batchOf(statements.byDirectQuill()), flushed(loggers.direct, "bench.direct"));
    session.run(comparison);
}

void runAll(Session& session) {
    const Loggers loggers;
    fire(session, loggers);
    suppress(session, loggers);
}

}  // namespace

int main(int argc, char** argv) {
    return bench::measure(argc, argv, {21, 0.002}, runAll);
}
