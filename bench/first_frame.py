#!/usr/bin/env python3
"""How long until a model is on screen, beside f3d and osgviewer.

Measures from start to end the processes that show one frame of a model and quit, 1280x800, interleaved,
and prints the medians in milliseconds, in parentheses those of the processor time, which other programs on
the machine sway less, and how many times longer each peer takes. f3d can only quit after a frame when it
saves it as PNG, so beside it the studio saves its view too.

first_frame.py [--studio PROGRAM] [--runs N] [MODEL...]; ends with 1 when a peer was faster.
"""

import argparse
import os
import resource
import shutil
import statistics
import subprocess
import sys
import tempfile
import threading
import time

MODELS = "/usr/share/assimp/models/"
DEFAULT = [MODELS + name for name in (
    "OBJ/spider.obj",
    "OBJ/WusonOBJ.obj",
    "Collada/duck.dae",
    "3DS/fels.3ds",
    "glTF2/2CylinderEngine-glTF-Binary/2CylinderEngine.glb",
)]
STUDIO = os.path.join(os.path.dirname(__file__), "../build/release/bin/halvern-studio")


def commands(studio, model, picture):
    """Name, command and further environment of what is compared: two of ours and their peers."""
    ours = [studio, model, "--size", "1280x800", "--frames", "1"]
    return [
        ("studio", ours, {}),
        ("osgviewer", ["osgviewer", "--window", "0", "0", "1280", "800", model],
         {"OSG_RUN_FRAME_COUNT": "1"}),
        ("studio, saved", ours + ["--view-screenshot", picture], {}),
        ("f3d, saved", ["f3d", "--dry-run", "--quiet", "--resolution", "1280,800",
                        "--output", picture, model], {}),
    ]


def processor_seconds():
    """Of all processes that were waited for."""
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def measure(command, variables):
    """Milliseconds and processor milliseconds that the process takes; None when it fails or is not there."""
    if not shutil.which(command[0]):
        return None
    start, start_processor = time.perf_counter(), processor_seconds()
    process = subprocess.Popen(command, env={**os.environ, **variables},
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    watchdog = threading.Timer(60, process.kill)
    watchdog.start()
    failed = process.wait() != 0  # with a timeout it would look only every 50 ms
    watchdog.cancel()
    if failed:
        return None
    return (time.perf_counter() - start) * 1e3, (processor_seconds() - start_processor) * 1e3


def median(times):
    """Of both; None when a run failed."""
    return None if None in times else tuple(map(statistics.median, zip(*times)))


def compare(studio, model, runs):
    """Prints the lines of a model; true when no peer was faster."""
    with tempfile.TemporaryDirectory() as folder:
        entries = commands(studio, model, os.path.join(folder, "picture.png"))
        for _, command, variables in entries:
            measure(command, variables)  # what the first run reads from disk counts for nobody
        times = {name: [] for name, _, _ in entries}
        for _ in range(runs):
            for name, command, variables in entries:
                times[name].append(measure(command, variables))
    return [report(model, ours, theirs, median(times[ours]), median(times[theirs]))
            for ours, theirs in (("studio", "osgviewer"), ("studio, saved", "f3d, saved"))]


def milliseconds(times):
    return "{:.0f} ms ({:.0f})".format(*times)


def report(model, ours, theirs, our_times, their_times):
    name = os.path.basename(model)
    if our_times is None:
        print(f"{name:22} {ours} failed")
        return False
    if their_times is None:
        print(f"{name:22} {ours} {milliseconds(our_times)}; {theirs} cannot show it")
        return True
    print(f"{name:22} {ours} {milliseconds(our_times)}; {theirs} {milliseconds(their_times)}; "
          f"ratio {their_times[0] / our_times[0]:.2f}")
    return our_times[0] < their_times[0]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--studio", default=os.path.normpath(STUDIO))
    parser.add_argument("--runs", type=int, default=9)
    parser.add_argument("models", nargs="*", metavar="MODEL")
    arguments = parser.parse_args()
    if "DISPLAY" not in os.environ:
        os.execvp("xvfb-run", ["xvfb-run", "-a", "-s", "-screen 0 1280x1024x24", sys.executable] + sys.argv)
    results = [compare(arguments.studio, model, arguments.runs) for model in arguments.models or DEFAULT]
    sys.exit(0 if all(all(pair) for pair in results) else 1)


if __name__ == "__main__":
    main()
