#!/usr/bin/env python3
"""Runs the ISA audit on a planted fixture and passes only when it fails for the planted reasons."""

# Usage: expect_audit_failure.py [--flagged NAME]... [--clean NAME]... -- <audit command>...
# The audit must exit with status 1, list every --flagged function (by its exact name, or its
# demangled name up to the parameter list) and list none of the --clean ones.

import argparse
import subprocess
import sys


def flagged_functions(output):
    names = []
    for line in output.splitlines():
        if line.startswith("FAIL "):
            names.extend(line[len("FAIL "):].rsplit(" [", 1)[0].split(" = "))
    return names


def matches(wanted, name):
    return name == wanted or name.startswith(wanted + "(")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--flagged", action="append", default=[])
    parser.add_argument("--clean", action="append", default=[])
    parser.add_argument("command", nargs=argparse.REMAINDER)
    args = parser.parse_args()
    command = args.command[1:] if args.command[:1] == ["--"] else args.command
    if not command or not args.flagged:
        parser.error("an audit command and at least one --flagged name are required")

    proc = subprocess.run(command, capture_output=True, text=True)
    sys.stdout.write(proc.stdout)
    sys.stdout.write(proc.stderr)
    ok = True
    if proc.returncode != 1:
        print(f"expected the audit to exit with 1 (violations), it exited with {proc.returncode}")
        ok = False
    flagged = flagged_functions(proc.stdout)
    for wanted in args.flagged:
        if not any(matches(wanted, name) for name in flagged):
            print(f"expected the audit to flag {wanted}")
            ok = False
    for unwanted in args.clean:
        if any(matches(unwanted, name) for name in flagged):
            print(f"the audit flagged {unwanted}, which holds only its path's instructions")
            ok = False
    return 0 if ok else 1


if __name__ == "__main__":
    sys.exit(main())
