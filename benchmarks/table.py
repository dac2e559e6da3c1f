#!/usr/bin/env python3
"""The figures of the benchmark programs and of their peers in one table.

    table.py --machine BUILD    what they were measured on
    table.py --table RESULTS    the table, from the folder with PROGRAM.json and machine
"""

import json
import os
import pathlib
import re
import statistics
import subprocess
import sys

# For each program: which benchmarks have which peer. A pattern for the name, the
# name of the peer, and what the peer is. All peers of a pattern count, and the first
# pattern that fits does; a benchmark that fits none stands without a peer.
PEERS = {
    "drawing": [
        (r"paint/(.*)", [(r"lines_alone/\1", "the lines alone")]),
        (r"repaint/(.*)", [(r"paint/\1", "the first paint")]),
        (r"layout/(.*)", [(r"layout_the_plain_way/\1", "all points walked again")]),
        (r"totals/(.*)", [(r"totals_of_numbers/\1", "a loop over numbers")]),
    ],
    "dxf_excel": [
        (r"dxf_(write|read)/(.*)", [(r"dxf_\1_dxflib/\2", "dxflib alone"),
                                    (r"dxf_\1_gdal/\2", "GDAL")]),
        (r"excel_write/(.*)", [(r"excel_write_qxlsx/\1", "QXlsx alone"),
                               (r"excel_write_openpyxl/\1", "openpyxl"),
                               (r"excel_write_xlsxwriter/\1", "XlsxWriter"),
                               (r"excel_write_xlsxwriter_lean/\1", "XlsxWriter, lean")]),
        (r"excel_read/(.*)", [(r"excel_read_qxlsx/\1", "QXlsx alone"),
                              (r"excel_read_openpyxl/\1", "openpyxl"),
                              (r"excel_read_gdal/\1", "GDAL")]),
    ],
    "exchange": [
        (r"read-kml/ours/(.*)", [(r"read-kml/GDAL/\1", "GDAL"),
                                 (r"read-kml/GPSBabel/\1", "GPSBabel")]),
        (r"read-gpx/ours/(.*)", [(r"read-gpx/GPSBabel/\1", "GPSBabel"),
                                 (r"read-gpx/GDAL/\1", "GDAL")]),
        (r"read-csv/ours/(.*)", [(r"read-csv/GDAL_rows/\1", "GDAL, as rows"),
                                 (r"read-csv/GDAL_points/\1", "GDAL, as points"),
                                 (r"read-csv/GPSBabel/\1", "GPSBabel")]),
        (r"write-kml/ours/(.*)", [(r"write-kml/GDAL/\1", "GDAL"),
                                  (r"write-bytes/ours/\1", "the bytes alone")]),
        (r"write-gpx/ours/(.*)", [(r"write-gpx/GPSBabel/\1", "GPSBabel")]),
        (r"write-csv/ours/(.*)", [(r"write-csv/GDAL/\1", "GDAL")]),
    ],
    "frame": [
        (r"extract_clean(_whole)?/.*", [(r"crc_by_table", "the checksum alone")]),
        (r"extract_noise/.*", [(r"extract_clean/65536", "a clean stream")]),
        (r"crc_by_table", [(r"crc_bit_by_bit", "bit by bit")]),
    ],
    "map": [
        (r"(lines/1000|areas|lines/1/2000).*", [(r"lines/1/2", "one line of two points")]),
    ],
    "tables": [
        (r"rebuild_tables/(1000|10000|20000)",
         [(r"plain_model/\1", "a plain model of the main table")]),
    ],
    "text": [
        (r"download/(.*)", [(r"point_pattern_alone/\1", "the pattern of a point alone")]),
    ],
    "transforms": [
        (r"velmo_(forward|back|forward_shifted|back_shifted)", [(r"proj/\1", "PROJ")]),
        (r"velmo_forward_logged", [(r"velmo_forward", "the same, silent")]),
    ],
}
# A benchmark that carries its peer itself: the seconds that the wire takes.
WIRE = {"usual_memory", "two_hundred_measurements"}

UNITS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}


def output_of(*command):
    try:
        return subprocess.run(command, capture_output=True, text=True, check=True).stdout.strip()
    except (OSError, subprocess.CalledProcessError):
        return ""


def machine(build):
    """Lines that describe this machine; not its name."""
    cpu = re.search(r"Model name:\s*(.*)", output_of("env", "LC_ALL=C", "lscpu"))
    memory = re.search(r"MemTotal:\s*(\d+)", pathlib.Path("/proc/meminfo").read_text())
    system = re.search(r'PRETTY_NAME="(.*)"', pathlib.Path("/etc/os-release").read_text())
    cache = pathlib.Path(build, "CMakeCache.txt").read_text()
    compiler = re.search(r"CMAKE_CXX_COMPILER:\w+=(.*)", cache)
    kind = re.search(r"CMAKE_BUILD_TYPE:\w+=(.*)", cache)
    lines = [
        ("Processor", f"{cpu.group(1).strip() if cpu else 'unknown'}, "
                      f"{os.cpu_count()} cores"),
        ("Memory", f"{int(memory.group(1)) / 2**20:.1f} GiB" if memory else "unknown"),
        ("System", f"{system.group(1) if system else 'unknown'}, Linux {os.uname().release}"),
        ("Qt", output_of("qtpaths6", "--qt-version") or "unknown"),
        ("Compiler", f"{output_of(compiler.group(1), '--version').splitlines()[0]}, "
                     f"{kind.group(1)}" if compiler and kind else "unknown"),
    ]
    for name, command in (("PROJ", ("pkg-config", "--modversion", "proj")),
                          ("GDAL", ("ogrinfo", "--version")),
                          ("GPSBabel", ("gpsbabel", "-V"))):
        said = re.search(r"\d+\.\d+(\.\d+)?", output_of(*command))
        lines.append((name, said.group(0) if said else "not installed"))
    lines.append(("Busy with other work at the start", f"{os.getloadavg()[0]:.1f} processes"))
    return "\n".join(f"- {what}: {text}" for what, text in lines)


class Figure:
    """The median of one benchmark's runs, in seconds or, with bytes, seconds a byte."""

    def __init__(self, runs):
        self.error = next((run.get("error_message", "failed") for run in runs
                           if run.get("error_occurred")), None)
        good = [run for run in runs if not run.get("error_occurred")]
        self.by_byte = bool(good) and "bytes_per_second" in good[0]
        self.wire = (statistics.median(run["cpu_s"] / run["cpu_to_wire"] for run in good)
                     if good and good[0].get("cpu_to_wire") else None)
        self.value = statistics.median(map(self._seconds, good)) if good else None

    def _seconds(self, run):
        if self.by_byte:
            return 1 / run["bytes_per_second"]
        if "cpu_s" in run:
            return run["cpu_s"]
        of_the_wall = run["name"].endswith(("/manual_time", "/real_time"))
        return run["real_time" if of_the_wall else "cpu_time"] * UNITS[run["time_unit"]]

    def text(self):
        if self.value is None:
            return f"**{self.error}**"
        return in_words(self.value) + ("/byte" if self.by_byte else "")


def in_words(seconds):
    for unit, size in (("s", 1), ("ms", 1e-3), ("µs", 1e-6), ("ns", 1e-9)):
        if seconds >= size:
            return f"{seconds / size:.3g} {unit}"
    return f"{seconds / 1e-9:.3g} ns"


def figures(path):
    runs = {}
    for run in json.loads(path.read_text())["benchmarks"]:
        if run.get("run_type") == "aggregate":
            continue
        name = re.sub(r"/(iterations:\d+|repeats:\d+|manual_time|real_time)", "",
                      run["run_name"])
        runs.setdefault(name, []).append(run)
    return {name: Figure(of_one) for name, of_one in runs.items()}


def peers_of(program, name):
    for pattern, peers in PEERS.get(program, []):
        match = re.fullmatch(pattern, name)
        if match:
            return [(match.expand(peer), words) for peer, words in peers]
    return []


def rows(program, found):
    pairs = {name: peers_of(program, name) for name in found}
    used = {peer for peers in pairs.values() for peer, _ in peers}
    for name, figure in found.items():
        if name in WIRE and figure.wire is not None:
            yield name, figure.text(), f"the wire {in_words(figure.wire)}", \
                f"{figure.value / figure.wire:.3g}"
        elif pairs[name]:
            for peer, words in pairs[name]:
                other = found.get(peer)
                if other is None or other.value is None:
                    why = "was not measured" if other is None else other.error
                    yield name, figure.text(), f"{words}: **{why}**", ""
                else:
                    ratio = f"{figure.value / other.value:.3g}" if figure.value else ""
                    yield name, figure.text(), f"{words} {other.text()}", ratio
        elif name not in used:
            yield name, figure.text(), "", ""


def table(folder):
    print("# Benchmarks\n")
    print(pathlib.Path(folder, "machine").read_text().strip())
    print(f"- At the end: {os.getloadavg()[0]:.1f} processes\n")
    print("CPU time unless the benchmark counts another, medians of all repetitions. The")
    print("ratio is ours to the peer's: below 1 we are quicker.\n")
    print("| Program | Benchmark | Ours | Peer | Ratio |\n|---|---|---|---|---|")
    for path in sorted(pathlib.Path(folder).glob("*.log")):
        try:
            found = figures(path.with_suffix(".json"))
        except (OSError, json.JSONDecodeError, KeyError) as error:
            print(f"| {path.stem} | **no figures** | {type(error).__name__}, see {path.name} | | |")
            continue
        for row in rows(path.stem, found):
            print(f"| {path.stem} | {' | '.join(row)} |")


def main():
    if len(sys.argv) != 3 or sys.argv[1] not in ("--machine", "--table"):
        sys.exit(__doc__)
    if sys.argv[1] == "--machine":
        print(machine(sys.argv[2]))
    else:
        table(sys.argv[2])


if __name__ == "__main__":
    main()
