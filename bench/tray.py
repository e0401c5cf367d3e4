#!/usr/bin/python3
"""tray.py BUILD_FOLDER [--quick] - what Korvo costs beside a bare tray program, a figure a line as JSON.

Runs inside a headless desktop. Two runs of the floor program stand around those of Korvo; where the two differ by more
than 10 % in what is compared, the machine was too busy to judge, and the figure says so. Only ratios are judged.
"""
import json
import os
import ssl
import subprocess
import sys
import tempfile
import urllib.request

HERE = os.path.dirname(os.path.abspath(__file__))
BUILD = os.path.abspath(sys.argv[1])
QUICK = "--quick" in sys.argv
RUNS, SETTLE, IDLE = ("3", "10", "25") if QUICK else ("7", "20", "60")


def measure(name, *command):
    print(f"  measuring {name} …", file=sys.stderr, flush=True)
    out = subprocess.run([sys.executable, os.path.join(HERE, "measure_tray.py"), "--name", name, "--runs", RUNS, "--settle", SETTLE,
                          "--idle", IDLE, "--no-show", "--kill", "--", *command], capture_output=True, text=True, check=False)
    try:
        result = json.loads(out.stdout)
    except ValueError:
        sys.exit(f"{name}: {out.stdout}{out.stderr}")
    if "error" in result:
        sys.exit(f"{name}: {result['error']}")
    return result


class Workspace:
    """A sample workspace in a process of its own, with or without a running timer."""

    def __init__(self, has_timer):
        self.process = subprocess.Popen([os.path.join(BUILD, "sandbox/korvo-sandbox")], stdout=subprocess.PIPE, text=True)
        self.file = tempfile.NamedTemporaryFile("w", suffix=".json")
        line = self.process.stdout.readline()
        self.file.write(line)
        self.file.flush()
        if not has_timer:
            info = json.loads(line)
            url = f"https://localhost:{info['port']}/sandbox/stop-timers"
            context = ssl.create_default_context(cafile=info["caFile"])
            urllib.request.urlopen(urllib.request.Request(url, method="POST"), context=context).close()

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()

    def __enter__(self):
        return self.file.name


def korvo(workspace):
    return [os.path.join(BUILD, "demo/korvo-attach"), workspace]


FIGURES = [
    ("start to a registered item", "ms", lambda r: r["start"]["median"]),
    ("proportional memory", "MB", lambda r: r["memory"]["pss_mb"]),
    ("anonymous memory", "MB", lambda r: r["memory"]["pss_anon_mb"]),
    ("CPU of the program", "ms a minute", lambda r: r["idle"]["cpu_ms_per_min"]),
    ("wake-ups of the program", "a second", lambda r: r["idle"]["voluntary_switches_per_s"]),
    ("CPU of the desktop", "ms a minute", lambda r: r["idle"]["desktop_cpu_ms_per_min"]),
    ("wake-ups of the desktop", "a second", lambda r: r["idle"]["desktop_switches_per_s"]),
]
GOALS = [1.5, 1.25, 1.5, 1.0, 1.0, 0.5, 0.5]  # Of the floor, with a timer running.
RESTING_GOALS = [10, 1.2, None, None]  # Without a timer, from the CPU of the program on. None: as beside the still floor.
NOISE = 1  # What the desktop does by itself differs by so much from minute to minute.
OF_THE_DESKTOP = 5  # From here on what counts is what a program adds to a desktop whose tray stands still.


def tell(**figure):
    print(json.dumps(figure), flush=True)


def main():
    floor = os.path.join(BUILD, "bench/korvo-floor")
    first = measure("floor", floor)
    with Workspace(has_timer=True) as workspace:
        running = measure("Korvo, timer running", *korvo(workspace))
    with Workspace(has_timer=False) as workspace:
        resting = measure("Korvo, no timer", *korvo(workspace))
    second = measure("floor again", floor)
    nothing = measure("nothing in the tray moves", floor, "--no-tick")

    for i, ((name, unit, get), goal) in enumerate(zip(FIGURES, GOALS)):
        a, b, k, n = get(first), get(second), get(running), get(nothing)
        base = (a + b) / 2
        added = n if i >= OF_THE_DESKTOP else 0
        tell(name=name, value=k, unit=unit, floor=round(base, 2), ratio=(k - added) / max(base - added, 0.01), goal=goal,
             noisy=abs(a - b) > 0.1 * max(a, b, 0.1))
    for (name, unit, get), goal in zip(FIGURES[3:], RESTING_GOALS):
        n = get(nothing)
        tell(name=name + ", no timer", value=get(resting), unit=unit, floor=n, goal=goal if goal is not None else n + NOISE)


main()
