"""Median CPU times of one of our Google Benchmark binaries, for the yardstick
scripts that time a peer from Python in the same session."""
import subprocess


def benchmark_medians(bench, name_filter, repetitions):
    """{benchmark name: median CPU time in ms} over `repetitions` runs."""
    out = subprocess.run([bench, f"--benchmark_filter={name_filter}", f"--benchmark_repetitions={repetitions}",
                          "--benchmark_min_time=0.1", "--benchmark_format=csv"],
                         capture_output=True, text=True, check=True).stdout
    found = {}
    for row in out.splitlines():
        name = row.split(",")[0].strip('"')
        if name.endswith("_median"):
            found[name[:-len("_median")]] = float(row.split(",")[3])  # CPU time, ms
    return found
