#!/usr/bin/python3
"""report.py BUILD_FOLDER [--quick] [--save FILE] [--compare FILE] - every figure of Korvo, as one table.

Runs each benchmark several times in headless desktops of their own and takes the median of what they tell. The figures
and the machine's name go to FILE as JSON (BUILD_FOLDER/bench.json by default); --compare takes such a file of a former
run and marks what got worse by more than a tenth. Ends with 1 if something got worse or a benchmark failed. Less is
better throughout.
"""
import argparse
import datetime
import json
import os
import platform
import statistics
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
SCRIPTS = os.path.join(os.path.dirname(HERE), "scripts")
WORSE = 1.1  # Times the saved figure; what is less is noise.
SMALLEST = 0.5  # Of figures that are no ratios: a difference below this is noise too, whatever its share.


def benchmarks(build, quick):
    """Environment, command, and how often it runs."""
    bench, sandbox = os.path.join(build, "bench"), os.path.join(build, "sandbox/korvo-sandbox")
    isolated, session = os.path.join(SCRIPTS, "isolated"), os.path.join(SCRIPTS, "desktop-session")
    runs = 1 if quick else 3
    extra = ["--quick"] if quick else []
    mate, bare = {"DESKTOP_TRAY": "mate", "DESKTOP_NOTIFY": "none"}, {"DESKTOP_TRAY": "none", "DESKTOP_NOTIFY": "none"}
    guarded = {**bare, "DESKTOP_FOCUS_PREVENTION": "true"}
    return [
        (mate, [session, sys.executable, os.path.join(HERE, "tray.py"), build, *extra], 1),  # Medians of its own.
        ({}, [isolated, f"{bench}/korvo-bench-poll", sandbox], runs),
        (bare, [isolated, session, f"{bench}/korvo-bench-hotkey"], runs),
        (mate, [isolated, session, f"{bench}/korvo-bench-panel", sandbox], runs),
        (bare, [isolated, session, f"{bench}/korvo-bench-settings"], runs),
        (guarded, [isolated, session, f"{bench}/korvo-bench-quickadd", sandbox], runs),
        (bare, [isolated, session, f"{bench}/korvo-bench-notch", *extra], runs),
    ]


def told_by(environment, command):
    """The figures that one run tells, and whether it ended well."""
    program = next(os.path.basename(word) for word in reversed(command) if "bench" in word and not word.startswith("--"))
    print(f"  {program} …", file=sys.stderr, flush=True)
    out = subprocess.run(command, env={**os.environ, **environment}, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                         check=False)
    figures = [json.loads(line) for line in out.stdout.splitlines() if line.startswith("{")]
    if out.returncode or not figures:
        print(f"{program} ended with {out.returncode}\n{out.stderr[-2000:]}", file=sys.stderr)
    return figures, out.returncode == 0 and bool(figures)


def median_of(runs):
    """One list of figures from those of several runs."""
    merged = {}
    for figure in (figure for run in runs for figure in run):
        merged.setdefault(figure["name"], []).append(figure)
    return [{**same[0], "value": statistics.median(figure["value"] for figure in same)} for same in merged.values()]


def judged(figure):
    """What its goal is about: the ratio to the floor, where there is one."""
    return figure.get("ratio", figure["value"])


def got_worse(figure, before):
    if before is None:
        return False
    return judged(figure) > judged(before) * WORSE + (0 if "ratio" in figure else SMALLEST)


def machine():
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        model = next((line.split(":", 1)[1].strip() for line in file if line.startswith("model name")), platform.machine())
    system = platform.freedesktop_os_release().get("PRETTY_NAME", platform.system())
    return f"{os.cpu_count()} cores, {model}, {system}, Linux {platform.release()}"


def row(figure, before):
    floor = f"{figure['floor']:.1f}" if "floor" in figure else ""
    ratio = f"{figure['ratio']:.2f}" if "ratio" in figure else ""
    goal, verdict = "", ""
    if "goal" in figure:
        goal = f"{figure['goal']:g}"
        verdict = "met" if judged(figure) <= figure["goal"] else "MISSED"
    if figure.get("noisy"):
        verdict += ", the two floors differ by over 10 %"
    saved = f"{judged(before):.2f}" if before else ""
    mark = "  WORSE" if got_worse(figure, before) else ""
    return f"{figure['name']:58}{figure['value']:9.2f} {figure['unit']:12}{floor:>8}{ratio:>7}{goal:>7}  {saved:>8}{mark}  {verdict}".rstrip()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build")
    parser.add_argument("--quick", action="store_true", help="one short run of each")
    parser.add_argument("--save", metavar="FILE")
    parser.add_argument("--compare", metavar="FILE")
    arguments = parser.parse_args()
    build = os.path.abspath(arguments.build)
    saved = {}
    if arguments.compare:
        with open(arguments.compare, encoding="utf-8") as file:
            saved = {figure["name"]: figure for figure in json.load(file)["figures"]}

    figures, is_good = [], True
    for environment, command, runs in benchmarks(build, arguments.quick):
        told = [told_by(environment, command) for _ in range(runs)]
        is_good = is_good and all(good for _, good in told)
        figures += median_of([figures for figures, _ in told])

    print(f"On {machine()}")
    print(f"{'':58}{'Korvo':>9} {'':12}{'floor':>8}{'ratio':>7}{'goal':>7}  {'saved' if saved else '':>8}")
    for figure in figures:
        print(row(figure, saved.get(figure["name"])))
    with open(arguments.save or os.path.join(build, "bench.json"), "w", encoding="utf-8") as file:
        json.dump({"machine": machine(), "time": datetime.datetime.now(datetime.timezone.utc).isoformat(timespec="seconds"),
                   "quick": arguments.quick, "figures": figures}, file, indent=1, ensure_ascii=False)
    worse = [figure["name"] for figure in figures if got_worse(figure, saved.get(figure["name"]))]
    return 0 if is_good and not worse else 1


if __name__ == "__main__":
    sys.exit(main())
