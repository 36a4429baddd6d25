#!/usr/bin/env python3
"""reference_test.py ROOT: everything public is in docs/reference.md with a text of its own, and every exported function
is used by a test. Reads the sources in its own way, not through the generator."""
import pathlib
import re
import subprocess
import sys
import tempfile
import shutil

root = pathlib.Path(sys.argv[1])
header = (root / "include/zorvex.h").read_text()
page = (root / "docs/reference.md").read_text()
problems = []


def expect(names, minimum, found, what):
    """Every name must pass `found`; fewer names than `minimum` mean that they were not read properly."""
    if len(names) < minimum:
        problems.append(f"only {len(names)} {what} found in the sources")
    problems.extend(f"{what}: {name}" for name in names if not found(name))


functions = re.findall(r"^ZLP_EXPORT[^(]*?(ZLP\w+)\(", header, re.M)
expect(functions, 90, lambda name: re.search(rf"^[\w* ]+\b{name}\(.*\);$", page, re.M), "functions without prototype")

constants = [name for name in re.findall(r"^#define (ZLP_\w+) ", header, re.M) if name != "ZLP_EXPORT"]
expect(constants, 90, lambda name: re.search(rf"^\| `{name}` \| \S+ \|.* \S.* \|$", page, re.M), "constants without meaning")

attributes = re.findall(r'^\s*\{"(\w+)", AttrType', (root / "src/model/attribute_table.cpp").read_text(), re.M)
expect(attributes, 104, lambda name: re.search(rf"^\| `{name}` \|.*\| \S[^|]+ \|$", page, re.M), "attributes without meaning")

parameters = re.findall(r"^(?:INT|DBL|STR)\((\w+),", (root / "src/env/parameter_table.inc").read_text(), re.M)
expect(parameters, 100, lambda name: f"| `{name}` | " in page, "parameters without meaning")

codes = re.findall(r"kError\w+ = (\d+)", (root / "src/base/status.hpp").read_text())
expect(codes, 20, lambda code: re.search(rf"^\| `ZLP_ERROR_\w+` \| {code} \|", page, re.M), "error codes")

sources = [p for p in (root / "tests").rglob("*") if p.suffix in (".cpp", ".hpp", ".c", ".py")]
tests = "\n".join(p.read_text() for p in sources if p.name != "reference_test.py")
used = set(re.findall(r"\bZLP\w+", tests))
expect(functions, 90, lambda name: name in used, "functions that no test calls")

# The generator notices what lacks a text.
for old, new in (("/* Writes the text to the log as it is. */\n", "\n"), (" /* NodeLimit reached */", "")):
    with tempfile.TemporaryDirectory() as folder:
        copy = pathlib.Path(folder)
        for name in ("include", "docs", "tools", "src/model", "src/env"):
            shutil.copytree(root / name, copy / name)
        if old not in header:
            problems.append(f"the header does not say {old.strip()}")
        (copy / "include/zorvex.h").write_text(header.replace(old, new))
        run = subprocess.run([sys.executable, str(copy / "tools/api_reference"), "--check"], capture_output=True)
        if run.returncode == 0:
            problems.append(f"the generator does not notice that {old.strip()} is gone")

if problems:
    sys.exit("\n".join(problems))
