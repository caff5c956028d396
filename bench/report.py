"""Runs the benchmarks beside their peers and writes docs/benchmarks.md (see scripts/bench.sh)."""
import argparse
import dataclasses
import json
import math
import os
import re
import resource
import signal
import subprocess
import sys
import tempfile
import time

from benchmark_rows import ROWS

PEERS = ["libpotrace-dev", "lib2geom-dev", "libpolyclipping-dev", "libgeos-dev", "libopencv-imgproc-dev",
         "libimagequant-dev", "libboost-dev", "libfreetype-dev", "libbenchmark-dev"]
UNITS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
REPETITIONS = 2
APART = "(two runs)"


@dataclasses.dataclass
class Figure:
    """What one benchmark took."""
    seconds: float
    megabytes: float | None = None


@dataclasses.dataclass(frozen=True)
class Stamp:
    """What a kept file tells of the run that it was measured in."""
    started: float  # tells runs apart
    longest: float  # seconds by the clock, after which a benchmark was given up
    load: float  # the last minute's average, at the end


def kept(file):
    """What an earlier run measured, if it also kept what run that was."""
    if not os.path.exists(file):
        return None
    with open(file, encoding="utf-8") as opened:
        measured = json.load(opened)
    return measured if "run" in measured else None


def ended(command, longest):
    """Runs a command for so many seconds by the clock: its status (None when it was given up), what it wrote
    to standard error, and its processor seconds."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    # In a group of its own, so that giving up ends the benchmark and not only what started it.
    with subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True,
                          start_new_session=True) as process:
        try:
            errors = process.communicate(timeout=longest)[1]
            status = process.returncode
        except subprocess.TimeoutExpired:
            status, errors = None, ""
            os.killpg(process.pid, signal.SIGTERM)  # the one that started it stays, to wait for it
            try:
                process.communicate(timeout=10)
            except subprocess.TimeoutExpired:
                os.killpg(process.pid, signal.SIGKILL)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return status, errors, after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime


class Runner:
    """Runs each benchmark in a process of its own, so that its peak of memory is its own too."""

    def __init__(self, programs, keep, deadline, longest):
        self.programs, self.keep, self.deadline, self.longest = programs, keep, deadline, longest
        self.started = time.time()
        self.figures = {}
        self.reasons = {}
        self.spent = {}  # processor seconds of what was given up
        self.stamps = {}

    def run(self, program, name):
        if (program, name) in self.stamps or (program, name) in self.reasons:
            return
        file = os.path.join(self.keep, re.sub(r"\W+", "_", f"{program}-{name}") + ".json")
        measured = kept(file) or self.measure(program, name, file)
        if not measured:
            return
        self.stamps[program, name] = Stamp(**measured["run"])
        if "spent" in measured:
            self.spent[program, name] = measured["spent"]
            self.reasons[program, name] = f"given up after {measured['spent']:.0f} s"
            return
        runs = [run for run in measured["benchmarks"]
                if run.get("run_type") == "iteration" and not run.get("error_occurred")]
        if not runs:
            errors = [run.get("error_message", "failed") for run in measured["benchmarks"]]
            self.reasons[program, name] = (errors or ["failed"])[0]
            return
        best = min(runs, key=lambda run: run["cpu_time"] * UNITS[run["time_unit"]])
        self.figures[program, name] = Figure(best["cpu_time"] * UNITS[best["time_unit"]], best.get("peakMB"))

    def measure(self, program, name, file):
        """Runs a benchmark and keeps what it tells; nothing when it could not run or its answer was wrong."""
        executable = os.path.join(self.programs, program)
        if not os.path.exists(executable):
            return None
        if self.deadline < time.monotonic():
            self.reasons[program, name] = "no time left"
            return None
        print(f"{program} {name}", file=sys.stderr, flush=True)
        part = file + ".part"
        # Started by a small program: Linux counts a process's peak from the memory of the one that starts it.
        command = [os.path.join(self.programs, "measure"), os.devnull, executable,
                   f"--benchmark_filter=^{re.escape(name)}$", "--benchmark_min_time=0.1",
                   f"--benchmark_repetitions={REPETITIONS}", f"--benchmark_out={part}",
                   "--benchmark_out_format=json"]
        status, errors, spent = ended(command, self.longest)
        if status is None:
            measured = {"benchmarks": [], "spent": spent}
        elif status != 0 or not os.path.exists(part) or os.path.getsize(part) == 0:
            wrong = [line for line in errors.splitlines() if "wrong answer" in line]
            self.reasons[program, name] = "wrong answer" if wrong else "failed"
            print("\n".join(wrong or ["  nothing measured"]), file=sys.stderr)
            return None
        else:
            with open(part, encoding="utf-8") as opened:
                measured = json.load(opened)
        measured["run"] = dataclasses.asdict(Stamp(self.started, self.longest, os.getloadavg()[0]))
        with open(part, "w", encoding="utf-8") as opened:
            json.dump(measured, opened)
        os.replace(part, file)
        return measured

    def apart(self, program, *names):
        """Whether two benchmarks were measured in different runs."""
        return len({self.stamps[program, name].started for name in names if (program, name) in self.stamps}) > 1

    def figure(self, program, name):
        return self.figures.get((program, name)) if name else None

    def shown(self, program, name, value=lambda figure: span(figure.seconds)):
        figure = self.figure(program, name)
        return value(figure) if figure else self.reasons.get((program, name), "–")


def span(seconds):
    for unit, size in (("s", 1.0), ("ms", 1e-3), ("µs", 1e-6), ("ns", 1e-9)):
        if seconds >= size:
            break
    value = seconds / size
    return f"{value:.0f} {unit}" if value >= 100 else f"{value:.3g} {unit}"


def number(value):
    return f"{value:,}".replace(",", " ")


def fitted(points):
    """The exponent of time = c · n^e, by least squares of the logarithms."""
    if len(points) < 3:
        return None
    xs, ys = [math.log(n) for n, _ in points], [math.log(t) for _, t in points]
    mx, my = sum(xs) / len(xs), sum(ys) / len(ys)
    return sum((x - mx) * (y - my) for x, y in zip(xs, ys)) / sum((x - mx) ** 2 for x in xs)


def verdict(holds):
    return "yes" if holds else "**no**"


def mark_text(mark):
    if mark >= 1:
        return f"{mark:g} x" if mark > 1 else "1 x"
    return f"1/{1 / mark:.0f}"


def within(runner, row, size, limit):
    """Whether our time is at most so many seconds, also where it is only known what was spent in vain."""
    ours = runner.figure(row.program, row.ours_at(size))
    if ours:
        return verdict(ours.seconds <= limit)
    spent = runner.spent.get((row.program, row.ours_at(size)), 0)
    return verdict(False) if spent > limit * row.passes * REPETITIONS else "not known"


def comparison(runner, row, size):
    """A line's cells: our time, the peer's, the ratio, the mark and whether it holds."""
    names = row.ours_at(size), row.peer_at(size)
    ours, peer = (runner.figure(row.program, name) for name in names)
    cells = [runner.shown(row.program, names[0]), runner.shown(row.program, names[1]) if row.peer else "none"]
    ratio = ours.seconds / peer.seconds if ours and peer else None
    ratio_text = f"{ratio:.2f}" if ratio else ""
    cells.append(f"{ratio_text} {APART}".strip() if runner.apart(row.program, *names) else ratio_text)
    limit, mark = row.limit_at(size), row.mark_at(size)
    if limit:
        return cells + [span(limit), within(runner, row, size, limit)]
    if mark:
        return cells + [mark_text(mark), verdict(ratio <= mark) if ratio else "not known"]
    return cells + ["", ""]


def table(head, lines):
    text = ["| " + " | ".join(head) + " |", "|" + "---|" * len(head)]
    return "\n".join(text + ["| " + " | ".join(line) + " |" for line in lines]) + "\n"


def summary(runner, rows):
    lines = []
    for row in rows:
        size = row.summary_size or row.sizes[-1]
        lines.append([row.question, row.size_text(size), *comparison(runner, row, size), row.bound])
    return table(["Question", "Size", "Tarvex", "Peer", "Ratio", "Mark", "Met", "What bounds it"], lines)


def details(runner, rows):
    lines = []
    for row in rows:
        lines += [[row.question, row.size_text(size), *comparison(runner, row, size)] for size in row.sizes]
    return table(["Question", "Size", "Tarvex", "Peer", "Ratio", "Mark", "Met"], lines)


def memory(runner, rows):
    lines = []
    for row in (row for row in rows if row.memory):
        for size in row.sizes:
            names = row.ours_at(size), row.peer_at(size)
            ours, peer = (runner.figure(row.program, name) for name in names)
            if not (ours and peer):
                continue
            lines.append([row.question, row.size_text(size), f"{ours.megabytes:.0f}", f"{peer.megabytes:.0f}",
                          f"{ours.megabytes / peer.megabytes:.2f}", verdict(ours.megabytes <= peer.megabytes)])
    return table(["Question", "Size", "Tarvex, MB", "Peer, MB", "Ratio", "Met"], lines)


def battery(programs):
    """What comes of degenerate pairs of shapes: each side's verdict, beside the pair's name."""
    program = os.path.join(programs, "shaping_bench")
    if not os.path.exists(program):
        return ""
    done = subprocess.run([program, "--benchmark_filter=BatteryUnion", "--benchmark_format=json"], text=True,
                          capture_output=True, check=False)
    if done.returncode != 0:
        return ""
    verdicts = {}
    for run in json.loads(done.stdout)["benchmarks"]:
        name, _, verdict = run.get("label", "").partition(": ")
        verdicts.setdefault(name, {})["Peer" if "Peer" in run["name"] else "Tarvex"] = verdict
    lines = [[name, sides.get("Tarvex", "–"), sides.get("Peer", "–")] for name, sides in verdicts.items()]
    return "\n## Degenerate pairs\n\nThe union of shapes that touch, share edges or are the same.\n\n" + table(
        ["Pair", "Tarvex", "lib2geom"], lines)


def growth(runner, rows):
    lines = []
    for row in rows:
        if len(row.sizes) < 3:
            continue

        def exponent(name_at):
            points = [(row.amount(size), runner.figure(row.program, name_at(size))) for size in row.sizes]
            value = fitted([(n, figure.seconds) for n, figure in points if figure])
            return f"{value:.2f}" if value is not None else ""

        lines.append([row.question, ", ".join(row.size_text(size) for size in row.sizes), exponent(row.ours_at),
                      exponent(row.peer_at) if row.peer else "", row.growth])
    return table(["Question", "Sizes", "Exponent", "Peer's", "Why"], lines)


def first_line(command):
    try:
        return subprocess.run(command, capture_output=True, text=True, check=False).stdout.splitlines()[0]
    except (OSError, IndexError):
        return "unknown"


def machine(programs):
    with open("/proc/cpuinfo", encoding="utf-8") as opened:
        model = next((line.split(":", 1)[1].strip() for line in opened if line.startswith("model name")), "unknown")
    with open("/proc/meminfo", encoding="utf-8") as opened:
        gigabytes = int(opened.readline().split()[1]) / 2**20
    cache = os.path.join(programs, "..", "CMakeCache.txt")
    with open(cache, encoding="utf-8") as opened:
        compiler = next(line.split("=", 1)[1].strip() for line in opened if line.startswith("CMAKE_CXX_COMPILER:"))
    versions = subprocess.run(["dpkg-query", "-W", "-f=${Package} ${Version}\n", *PEERS], capture_output=True,
                              text=True, check=False).stdout.split("\n")
    peers = ", ".join(line.replace("-dev ", " ") for line in versions if line)
    return (f"- processor: {model}, {os.cpu_count()} cores of a virtual machine; {gigabytes:.0f} GB of memory\n"
            f"- compiler: {first_line([compiler, '--version'])}, `-O3`, no flags for this processor\n"
            f"- peers: {peers}\n")


def run_text(stamps):
    loads = sorted({f"{load:.0f}" for load in (min(s.load for s in stamps), max(s.load for s in stamps))}, key=int)
    return (f"{len(stamps)} benchmarks at a load average of {' to '.join(loads)}, with at most "
            f"{stamps[0].longest:g} s by the clock for each")


def runs_text(runner):
    """How many runs the figures come from, at what loads and with what limits."""
    runs = {}
    for stamp in runner.stamps.values():
        runs.setdefault(stamp.started, []).append(stamp)
    texts = [run_text(stamps) for _, stamps in sorted(runs.items())]
    if len(texts) <= 1:
        return f"- measured in one run: {''.join(texts)}\n" if texts else "- nothing measured\n"
    return f"- put together from {len(texts)} runs:\n" + "".join(f"  - {text}\n" for text in texts)


def pairs_text(runner, rows):
    """What is true of each row's two times."""
    if not any(runner.apart(row.program, row.ours_at(size), row.peer_at(size)) for row in rows for size in row.sizes):
        return "A row's two times are of the same run."
    return f"A row's two times are of the same run, but for the rows that say {APART}, whose loads may differ."


def document(runner, rows, programs):
    return f"""# Benchmarks

Written by `scripts/bench.sh`; do not edit. What was found and mended is told in
[performance.md](performance.md).

{machine(programs)}{runs_text(runner)}
Times are processor time, the better of two repetitions, each benchmark in a process of its own.
{pairs_text(runner, rows)}
Ratio is our time by the peer's; the mark is what it should at most be (or the longest time, where
seconds stand there). A row that misses its mark stays, with the reason. "Given up" tells the processor time
that a benchmark had taken when the clock reached the run's limit, for its input, its checks and both
repetitions. Where that is more than all of them could take within a mark in seconds, the mark is missed;
otherwise a mark for which a time is missing is "not known" to be met.

{summary(runner, rows)}
## All sizes

{details(runner, [row for row in rows if len(row.sizes) > 1])}
## Peak memory

Of the whole process, the picture included.

{memory(runner, rows)}
## How cost grows

The exponent e of time = c · n^e, fitted to the sizes; n counts what the size counts (of square pictures, the
pixels). 1 is linear; n log n shows as 1.1 or so, and what leaves the caches on the way adds to it.

{growth(runner, rows)}{battery(programs)}"""


def main():
    parser = argparse.ArgumentParser(prog="scripts/bench.sh", description="Measures every row beside its peer.")
    parser.add_argument("root", help=argparse.SUPPRESS)
    parser.add_argument("rows", nargs="*", metavar="WORD",
                        help="only rows whose names contain a word; their figures are printed")
    parser.add_argument("--list", action="store_true", help="show the rows' names")
    parser.add_argument("--seconds", type=float, default=1140, help="stop measuring after so long (1140)")
    parser.add_argument("--longest", type=float, default=60, help="seconds for one benchmark (60)")
    parser.add_argument("--keep", metavar="DIR", help="keep what is measured in DIR, and take what is there")
    arguments = parser.parse_args()
    wanted = [row for row in ROWS
              if not arguments.rows or any(word.lower() in row.question.lower() for word in arguments.rows)]
    if arguments.list or not wanted:
        print("\n".join(row.question for row in ROWS))
        return 0 if arguments.list else 2
    programs = os.path.join(arguments.root, "build", "bench", "bench")
    with tempfile.TemporaryDirectory() as temporary:
        keep = arguments.keep or temporary
        os.makedirs(keep, exist_ok=True)
        runner = Runner(programs, keep, time.monotonic() + arguments.seconds, arguments.longest)
        for row in wanted:
            for size in row.sizes:
                for name in (row.ours_at(size), row.peer_at(size)):
                    if name:
                        runner.run(row.program, name)
        if arguments.rows:
            print(runs_text(runner) + "\n" + details(runner, wanted), end="")
            return 0
        text = document(runner, ROWS, programs)
    with open(os.path.join(arguments.root, "docs", "benchmarks.md"), "w", encoding="utf-8") as out:
        out.write(text)
    return 0


if __name__ == "__main__":
    sys.exit(main())
