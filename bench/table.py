#!/usr/bin/env python3
"""Turns the JSON files of benchmark programs into one table.

Usage: table.py [--markdown] [--commit=NAME] FILE...
"""
import json
import platform
import re
import statistics
import sys

# Each kind of comparison names in its label the clock that counts: what the thread used of a processor, or what passed.
CLOCK_FIELD = {"thread": "cpu_time", "wall": "real_time", "settled": "real_time"}
NANOSECONDS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
HEADINGS = ["case", "ours", "best peer", "ratio to it", "other peers", "limit", "share of the limit"]


def medians(files):
    """{case: {role: median time in ns}}, in the order of the files."""
    times = {}
    for path in files:
        with open(path) as file:
            runs = json.load(file)["benchmarks"]
        for run in runs:
            if run["run_type"] != "iteration":
                continue
            case, role = split_name(run["name"])
            time = run[CLOCK_FIELD[run["label"]]] * NANOSECONDS[run["time_unit"]]
            times.setdefault(case, {}).setdefault(role, []).append(time)
    return {case: {role: statistics.median(values) for role, values in roles.items()}
            for case, roles in times.items()}


def split_name(name):
    """Case and role: what follows the last of "/ours", "/peer:NAME", "/limit:NAME"; Google Benchmark adds its own."""
    name = re.sub(r"(/(real_time|manual_time|repeats:\d+|min_time:[\d.]+))*$", "", name)
    case, role = re.fullmatch(r"(.*?)/(ours|(?:peer|limit|peer\+limit):.*)", name).groups()
    return case, role


def named(roles, kind):
    """[(name, time)] of a kind of role, fastest first."""
    found = [(role.split(":", 1)[1], time) for role, time in roles.items()
             if kind in role.split(":")[0].split("+")]
    return sorted(found, key=lambda entry: entry[1])


def time_text(nanoseconds):
    for unit in ("s", "ms", "us"):
        if nanoseconds >= NANOSECONDS[unit]:
            return f"{nanoseconds / NANOSECONDS[unit]:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def row(case, roles):
    """What the headings say; a ratio above 1 means that we are faster."""
    ours = roles["ours"]
    peers = [f"{name} {time_text(time)}" for name, time in named(roles, "peer")]
    ratios = [f"{time / ours:.2f}" for _, time in named(roles, "peer")]
    others = ", ".join(f"{name} {time / ours:.2f}" for name, time in named(roles, "peer")[1:])
    limits = named(roles, "limit")
    limit = f"{limits[0][0]} {time_text(limits[0][1])}" if limits else "-"
    share = f"{limits[0][1] / ours:.2f}" if limits else "-"
    return [case, time_text(ours), peers[0] if peers else "-", ratios[0] if ratios else "-", others or "-", limit, share]


def print_plain(rows):
    widths = [max(len(entry[i]) for entry in rows) for i in range(len(HEADINGS))]
    for entry in rows:
        print("  ".join(text.ljust(width) for text, width in zip(entry, widths)).rstrip())


def print_markdown(rows):
    rows.insert(1, ["---"] * len(HEADINGS))
    for entry in rows:
        print("| " + " | ".join(entry) + " |")


def setting(files, commit):
    """What the figures were measured with."""
    with open("/proc/cpuinfo") as file:
        models = re.findall(r"^model name\s*: (.*)$", file.read(), re.MULTILINE)
    with open(files[0]) as file:
        context = json.load(file)["context"]
    machine = f"{models[0] if models else platform.machine()}, {context['num_cpus']} processors"
    load = ", ".join(f"{value:.1f}" for value in context["load_avg"])
    return f"{machine}; {context['compiler']}; commit {commit}; {context['date'][:10]}; load before: {load}"


def main(arguments):
    options = [argument for argument in arguments if argument.startswith("-")]
    files = [argument for argument in arguments if not argument.startswith("-")]
    commits = [option.split("=", 1)[1] for option in options if option.startswith("--commit=")]
    if not files:
        sys.exit(__doc__)
    rows = [HEADINGS] + [row(case, roles) for case, roles in medians(files).items()]
    (print_markdown if "--markdown" in options else print_plain)(rows)
    print("\n" + setting(files, commits[0] if commits else "unknown"))


if __name__ == "__main__":
    main(sys.argv[1:])
