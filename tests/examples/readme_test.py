#!/usr/bin/env python3
"""readme_test.py PAGE CC INCLUDE LIBRARY: every C program of the page compiles cleanly and prints what the page says."""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

readme, compiler, include, library = sys.argv[1:]
text = pathlib.Path(readme).read_text()
programs = list(re.finditer(r"^```c\n(.*?)^```$\n\nIt prints\n\n```text\n(.*?)^```$", text, re.M | re.S))
if not programs or len(programs) != len(re.findall(r"^```c$", text, re.M)):
    sys.exit(f"{readme} has no C program, or one without what it prints")

with tempfile.TemporaryDirectory() as folder:
    source, binary = os.path.join(folder, "first.c"), os.path.join(folder, "first")
    flags = ["-std=c11", "-Wall", "-Wextra", "-pedantic", "-Werror", "-O2", "-I" + include]
    environment = dict(os.environ, LD_LIBRARY_PATH=os.path.dirname(library))
    for program in programs:
        pathlib.Path(source).write_text(program.group(1))
        subprocess.run([compiler, *flags, source, "-o", binary, library], check=True)
        run = subprocess.run([binary], capture_output=True, text=True, env=environment)
        if run.returncode != 0 or run.stdout != program.group(2):
            sys.exit(f"exit code {run.returncode}, printed\n{run.stdout}{run.stderr}instead of\n{program.group(2)}")
