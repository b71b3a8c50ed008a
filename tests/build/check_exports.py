#!/usr/bin/env python3
"""Compares the names that a shared object exports with the checked-in export list."""

# Usage: check_exports.py [--nm PROG] [--headers DIR] <shared-object> <export-list>
# With --headers, every listed name must also be declared in a header of DIR.
# Exit status: 0 when the sets are equal, 1 when they differ, 2 when the check could not run.

import argparse
import re
import subprocess
import sys

# nm -D prints "value type name[@version]"; undefined entries have no value and are left out by
# --defined-only already.
NM_LINE_RE = re.compile(r"^([0-9a-fA-F]+) ([A-Za-z]) (\S+)$")


def exported_names(nm, library):
    proc = subprocess.run([nm, "-D", "--defined-only", library], capture_output=True, text=True)
    if proc.returncode != 0:
        raise RuntimeError(f"{nm} failed on {library}: {proc.stderr.strip()}")
    names = set()
    for line in proc.stdout.splitlines():
        if not line.strip():
            continue
        m = NM_LINE_RE.match(line.strip())
        if not m:
            raise RuntimeError(f"cannot read nm line: {line!r}")
        value, kind, name = m.groups()
        # A version node appears as an absolute symbol of value 0 named after the node; it is the
        # linker's bookkeeping, not an export.
        if kind == "A" and int(value, 16) == 0:
            continue
        names.add(name.split("@", 1)[0])
    return names


def listed_names(path):
    names = set()
    duplicates = []
    with open(path) as f:
        for line in f:
            name = line.strip()
            if not name:
                continue
            if name in names:
                duplicates.append(name)
            names.add(name)
    return names, duplicates


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("library")
    parser.add_argument("exports")
    parser.add_argument("--nm", default="nm")
    parser.add_argument("--headers", help="folder of public headers that must declare every name")
    args = parser.parse_args()
    try:
        actual = exported_names(args.nm, args.library)
        expected, duplicates = listed_names(args.exports)
    except (OSError, RuntimeError) as e:
        print(f"check_exports: {e}", file=sys.stderr)
        return 2
    if not actual:
        print(f"check_exports: {args.library} exports nothing (is nm working?)", file=sys.stderr)
        return 2
    if not expected:
        print(f"check_exports: {args.exports} lists no names", file=sys.stderr)
        return 2

    undeclared = []
    if args.headers:
        import pathlib
        text = "".join(p.read_text() for p in sorted(pathlib.Path(args.headers).glob("*.h")))
        declared = set(re.findall(r"[A-Za-z_][A-Za-z0-9_]*", text))
        undeclared = sorted(expected - declared)
    for name in undeclared:
        print(f"not declared in {args.headers}: {name}")

    missing = sorted(expected - actual)
    unexpected = sorted(actual - expected)
    for name in duplicates:
        print(f"duplicate in list: {name}")
    for name in missing:
        print(f"missing: {name}")
    for name in unexpected:
        print(f"unexpected: {name}")
    if missing or unexpected or duplicates or undeclared:
        print(f"check_exports: {len(missing)} missing, {len(unexpected)} unexpected, "
              f"{len(duplicates)} duplicated; {len(actual)} exported, {len(expected)} listed")
        return 1
    print(f"check_exports: the {len(actual)} exported names match {args.exports}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
