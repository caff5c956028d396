"""Runs `tarvex breakup` over pictures and prints a report (see breakup.sh)."""
import collections
import json
import os
import random
import subprocess
import sys
import tempfile
import time

from PIL import Image

SIDE = 700  # pictures are shown to the program at this size at most


def silhouette(path):
    """The picture in grey on white, if it has two tones; else None."""
    with Image.open(path) as picture:
        picture = picture.convert("RGBA")
        picture.thumbnail((SIDE, SIDE))
        ground = Image.new("RGBA", picture.size, "white")
        grey = Image.alpha_composite(ground, picture).convert("L")
    counts = grey.histogram()
    total = sum(counts)
    dark, light = sum(counts[:60]), sum(counts[196:])
    between = total - dark - light
    if total < 4000 or between > 0.06 * total or not 0.02 * total < dark < 0.7 * total:
        return None
    return grey


def area(points):
    twice = 0.0
    for (ax, ay), (bx, by) in zip(points, points[1:] + points[:1]):
        twice += ax * by - bx * ay
    return abs(twice) / 2


def boundary(region):
    return region["rails"][0] + region["rails"][1][::-1]


def ink(grey):
    counts = grey.histogram()
    return sum(n * (255 - level) / 255 for level, n in enumerate(counts))


def length_of_edges(grey):
    """Half the outline's length, roughly: the number of steps between dark and light, corrected for slants."""
    bits = grey.point(lambda v: 255 if v < 128 else 0)
    width, height = bits.size
    data = bits.tobytes()
    steps = sum(1 for i in range(1, len(data)) if i % width and data[i] != data[i - 1])
    steps += sum(1 for i in range(width, len(data)) if data[i] != data[i - width])
    return steps * 0.785 / 2


def main():
    picture = os.path.join(tempfile.mkdtemp(), "picture.png")
    program, directory, count = sys.argv[1], sys.argv[2], int(sys.argv[3])
    files = sorted(
        os.path.join(root, name)
        for root, _, names in os.walk(directory)
        for name in names
        if name.endswith(".png")
    )
    files = [f for f in files if os.path.getsize(f) < 150_000]
    random.Random(1).shuffle(files)
    files = files[:count]
    budget = float(os.environ.get("BREAKUP_SECONDS", "1e9"))
    begun = time.monotonic()
    groups = {"strokes": [], "others": []}
    for path in files:
        if time.monotonic() - begun > budget:
            break
        try:
            grey = silhouette(path)
        except (OSError, ValueError, Image.DecompressionBombError):
            continue
        if grey is None:
            continue
        inked = ink(grey)
        long = length_of_edges(grey)
        width = inked / long if long else 0
        kind = "strokes" if long > 4 * width else "others"
        grey.save(picture)
        start = time.monotonic()
        try:
            run = subprocess.run(
                [program, "breakup", picture, "-o", "-", "--format", "json"],
                capture_output=True,
                timeout=120,
            )
            status, output, errors = run.returncode, run.stdout, run.stderr.decode().strip()
        except subprocess.TimeoutExpired:
            status, output, errors = -1, b"", "more than 120 seconds"
        seconds = time.monotonic() - start
        covered, whole, regions, reasons = 0.0, 0.0, 0, collections.Counter()
        if status == 0:
            for shape in json.loads(output)["shapes"]:
                for island in shape["islands"]:
                    regions += len(island["regions"])
                    whole += island["area"]
                    covered += sum(area(boundary(r)) for r in island["regions"])
                    if island["result"] != "done":
                        reasons[island["result"]] += 1
        part = covered / whole if whole else 0
        good = status == 0 and abs(part - 1) < 0.02
        groups[kind].append((path, good, part, regions, seconds, dict(reasons), errors))
    for kind, results in groups.items():
        if not results:
            continue
        good = [r for r in results if r[1]]
        times = sorted(r[4] for r in results)
        parts = sorted(r[2] for r in results)
        print(
            f"{kind}: {len(results)} silhouettes, {len(good)} covered to 2% ({100 * len(good) / len(results):.0f}%), "
            f"covered area median {100 * parts[len(parts) // 2]:.1f}%, "
            f"time median {times[len(times) // 2]:.2f} s, longest {times[-1]:.2f} s"
        )
        for path, ok, part, regions, seconds, reasons, errors in results:
            if not ok:
                name = os.path.relpath(path, directory)
                print(f"    {name}: {100 * part:.1f}% in {regions} regions; {reasons or errors or 'overlap or gap'}")


main()
