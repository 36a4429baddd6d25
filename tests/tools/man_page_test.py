#!/usr/bin/env python3
"""man_page_test.py PAGE PROGRAM VERSION: the man page names every command and option of the program and no other, and
formats without complaint where man is installed."""
import pathlib
import re
import shutil
import subprocess
import sys

page, program, version = pathlib.Path(sys.argv[1]), sys.argv[2], sys.argv[3]
text = page.read_text().replace("\\-", "-")
problems = []


def help_of(*command):
    return subprocess.run([program, *command, "--help"], capture_output=True, text=True, check=True).stdout


commands = re.findall(r"^  ([a-z]+) {2,}", help_of().partition("Subcommands:")[2], re.M)
options = set(re.findall(r"--[a-z-]+", help_of()))
for command in commands:
    options |= set(re.findall(r"--[a-z-]+", help_of(command)))
    if not re.search(rf"^\.B zorvex {command}$", text, re.M) or not re.search(rf"^\.BI {command} ", text, re.M):
        problems.append(f"command {command} is missing from the synopsis or the commands")
if len(commands) < 5:
    problems.append(f"only the commands {commands} were found in the help")
named = set(re.findall(r"--[a-z-]+", text))
problems += [f"option {name} is missing" for name in sorted(options - named)]
problems += [f"the program has no option {name}" for name in sorted(named - options)]
if f'"Zorvex {version}"' not in text:
    problems.append(f"the page is not of version {version}")

if shutil.which("groff"):
    run = subprocess.run(["groff", "-man", "-ww", "-Tutf8", str(page)], capture_output=True, text=True)
    if run.returncode != 0 or run.stderr:
        problems.append("groff: " + run.stderr)
if problems:
    sys.exit("\n".join(problems))
