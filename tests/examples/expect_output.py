#!/usr/bin/env python3
"""expect_output.py FILE PROGRAM [ARGUMENT...]: the program succeeds and prints what the file holds."""
import difflib
import pathlib
import subprocess
import sys

expected = pathlib.Path(sys.argv[1]).read_text()
run = subprocess.run(sys.argv[2:], capture_output=True, text=True)
if run.returncode != 0 or run.stdout != expected:
    print(f"exit code {run.returncode}", run.stderr)
    sys.stdout.writelines(difflib.unified_diff(expected.splitlines(True), run.stdout.splitlines(True), "expected", "got"))
    sys.exit(1)
