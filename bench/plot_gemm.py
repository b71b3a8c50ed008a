#!/usr/bin/env python3
"""GFLOP/s against n for TAV and the peers, from the CSV that blas_gemm_bench --csv=FILE writes.

    bench/plot_gemm.py gemm.csv bench/gemm_gflops.png

One panel per (path, routine) of the large square products, a line per library and thread
count; the FMA-loop peak of the same run is drawn as a dashed line where it was measured.
"""
import csv
import sys
from collections import defaultdict

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402


def read(path):
    rows = []
    with open(path, newline="") as f:
        for r in csv.reader(f):
            if len(r) != 8:
                continue
            tav_path, section, routine, shape, n, threads, library, value = r
            rows.append(dict(path=tav_path, section=section, routine=routine, n=int(n),
                             threads=int(threads), library=library, value=float(value)))
    return rows


def main():
    if len(sys.argv) != 3:
        sys.exit("usage: plot_gemm.py <csv> <png>")
    rows = read(sys.argv[1])
    peaks = {(r["path"], r["threads"]): r["value"] for r in rows if r["section"] == "peak"}
    panels = sorted({(r["path"], r["routine"]) for r in rows if r["section"] == "large"})
    if not panels:
        sys.exit("no large-product rows in " + sys.argv[1])
    columns = min(4, len(panels))
    lines = (len(panels) + columns - 1) // columns
    fig, axes = plt.subplots(lines, columns, figsize=(4.2 * columns, 3.4 * lines), squeeze=False)
    for ax, (tav_path, routine) in zip(axes.flat, panels):
        series = defaultdict(list)
        for r in rows:
            if r["section"] == "large" and r["path"] == tav_path and r["routine"] == routine:
                series[(r["library"], r["threads"])].append((r["n"], r["value"]))
        for (library, threads), points in sorted(series.items()):
            points.sort()
            style = "-" if threads == 1 else "--"
            ax.plot([p[0] for p in points], [p[1] for p in points], style, marker="o",
                    label=f"{library} {threads}t")
        if routine == "DGEMM":
            for threads in (1, 2):
                if (tav_path, threads) in peaks:
                    ax.axhline(peaks[(tav_path, threads)], color="grey", linestyle=":",
                               linewidth=1)
        ax.set_title(f"{routine}, TAV {tav_path} path")
        ax.set_xlabel("n (m = n = k)")
        ax.set_ylabel("GFLOP/s")
        ax.grid(alpha=0.3)
        ax.legend(fontsize=7)
    for ax in list(axes.flat)[len(panels):]:
        ax.axis("off")
    fig.tight_layout()
    fig.savefig(sys.argv[2], dpi=110)


if __name__ == "__main__":
    main()
