#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Turns the JSON files of benchmark programs into one table.

Usage: table.py [--markdown] [--any-load] [--commit=NAME] FILE...

Refuses to print when the machine was busy before the first program started, unless --any-load is given.
"""
import json
import platform
import re
import statistics
import sys

# A comparison's label names the clock to use: the thread's processor time, or the time that passed.
CLOCK_FIELD = {"thread": "cpu_time", "wall": "real_time", "settled": "real_time"}
NANOSECONDS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
HEADINGS = ["case", "ours", "quartiles", "best peer", "quartiles", "ratio to it", "other peers", "limit",
            "share of the limit"]
HIGHEST_LOAD = 1.5


class Times:
    """The times of one contender in ns."""

    def __init__(self, values):
        self.median = statistics.median(values)
        self.low, _, self.high = statistics.quantiles(values, n=4, method="inclusive") if len(values) > 1 \
            else (self.median,) * 3

    def spread(self):
        unit = unit_of(self.median)
        return f"{self.low / NANOSECONDS[unit]:.3g} to {self.high / NANOSECONDS[unit]:.3g}"


def collect(files):
    """{case: {role: Times}}, in the order of the files, and {case: {role: reason}} of peers that were not run."""
    values, absent = {}, {}
    for path in files:
        with open(path, encoding="utf-8") as file:
            runs = json.load(file)["benchmarks"]
        for run in runs:
            if run["run_type"] != "iteration":
                continue
            case, role = split_name(run["name"])
            if run.get("error_occurred"):
                absent.setdefault(case, {})[role] = run["error_message"]
                continue
            time = run[CLOCK_FIELD[run["label"]]] * NANOSECONDS[run["time_unit"]]
            values.setdefault(case, {}).setdefault(role, []).append(time)
    return {case: {role: Times(times) for role, times in roles.items()} for case, roles in values.items()}, absent


def split_name(name):
    """Case and role: what follows the last of "/ours", "/peer:NAME", "/limit:NAME"; Google Benchmark adds its own."""
    name = re.sub(r"(/(real_time|manual_time|repeats:\d+|min_time:[\d.]+))*$", "", name)
    case, role = re.fullmatch(r"(.*?)/(ours|(?:peer|limit):.*)", name).groups()
    return case, role


def named(roles, kind):
    """[(name, Times)] for one kind of role, fastest first."""
    found = [(role.split(":", 1)[1], times) for role, times in roles.items()
             if role.split(":")[0] == kind]
    return sorted(found, key=lambda entry: entry[1].median)


def unit_of(nanoseconds):
    return next((unit for unit in ("s", "ms", "us") if nanoseconds >= NANOSECONDS[unit]), "ns")


def time_text(nanoseconds):
    unit = unit_of(nanoseconds)
    return f"{nanoseconds / NANOSECONDS[unit]:.3g} {unit}"


def row(case, roles, absent):
    """What the headings say; a ratio above 1 means that we are faster."""
    ours = roles["ours"]
    peers = named(roles, "peer")
    limits = named(roles, "limit")
    result = [case, time_text(ours.median), ours.spread()]
    if peers:
        name, best = peers[0]
        result += [f"{name} {time_text(best.median)}", best.spread(), f"{best.median / ours.median:.2f}"]
    else:
        result += ["-"] * 3
    others = [f"{name} {times.median / ours.median:.2f}" for name, times in peers[1:]]
    others += [f"{role.split(':', 1)[1]} not run: {reason}" for role, reason in absent.items()]
    result.append(", ".join(others) or "-")
    if limits:
        name, limit = limits[0]
        result += [f"{name} {time_text(limit.median)}", f"{limit.median / ours.median:.2f}"]
    else:
        result += ["-"] * 2
    return result


def print_plain(rows):
    widths = [max(len(entry[i]) for entry in rows) for i in range(len(HEADINGS))]
    for entry in rows:
        print("  ".join(text.ljust(width) for text, width in zip(entry, widths)).rstrip())


def print_markdown(rows):
    rows.insert(1, ["---"] * len(HEADINGS))
    for entry in rows:
        print("| " + " | ".join(entry) + " |")


def context_of(path):
    with open(path, encoding="utf-8") as file:
        return json.load(file)["context"]


def setting(context, commit):
    """The machine, compiler and commit of the figures."""
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        models = re.findall(r"^model name\s*: (.*)$", file.read(), re.MULTILINE)
    machine = f"{models[0] if models else platform.machine()}, {context['num_cpus']} processors"
    load = ", ".join(f"{value:.1f}" for value in context["load_avg"])
    return (f"{machine}; flavour {context['flavour']}; {context['compiler']}, {context['flags']} unless a row names "
            f"its flags; commit {commit}; {context['date'][:10]}; load before: {load}")


def main(arguments):
    options = [argument for argument in arguments if argument.startswith("-")]
    files = [argument for argument in arguments if not argument.startswith("-")]
    commits = [option.split("=", 1)[1] for option in options if option.startswith("--commit=")]
    if not files:
        sys.exit(__doc__)
    context = context_of(files[0])
    load = context["load_avg"][0]
    if load > HIGHEST_LOAD and "--any-load" not in options:
        sys.exit(f"table.py: the load was {load:.1f} before the first program (at most {HIGHEST_LOAD} is allowed): "
                 "these figures say nothing; --any-load prints them all the same")
    print(setting(context, commits[0] if commits else "unknown") + "\n")
    times, absent = collect(files)
    rows = [HEADINGS] + [row(case, roles, absent.get(case, {})) for case, roles in times.items()]
    (print_markdown if "--markdown" in options else print_plain)(rows)


if __name__ == "__main__":
    main(sys.argv[1:])
