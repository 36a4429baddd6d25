#!/usr/bin/env python3
"""readme_test.py README CC INCLUDE LIBRARY: the README's C program compiles cleanly and prints what the README says."""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

readme, compiler, include, library = sys.argv[1:]
text = pathlib.Path(readme).read_text()
program = re.search(r"^```c\n(.*?)^```$", text, re.M | re.S)
if program is None:
    sys.exit("the README has no C program")
output = re.search(r"^It prints\n\n```text\n(.*?)^```$", text[program.end() :], re.M | re.S)
if output is None:
    sys.exit("the README does not say what its program prints")

with tempfile.TemporaryDirectory() as folder:
    source, binary = os.path.join(folder, "first.c"), os.path.join(folder, "first")
    pathlib.Path(source).write_text(program.group(1))
    flags = ["-std=c11", "-Wall", "-Wextra", "-pedantic", "-Werror", "-O2", "-I" + include]
    subprocess.run([compiler, *flags, source, "-o", binary, library], check=True)
    environment = dict(os.environ, LD_LIBRARY_PATH=os.path.dirname(library))
    run = subprocess.run([binary], capture_output=True, text=True, env=environment)
if run.returncode != 0 or run.stdout != output.group(1):
    sys.exit(f"exit code {run.returncode}, printed\n{run.stdout}{run.stderr}instead of\n{output.group(1)}")
