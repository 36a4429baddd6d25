#!/usr/bin/env python3
"""make_models_test.py EXAMPLES: the sample models are what their generator writes."""
import filecmp
import pathlib
import subprocess
import sys
import tempfile

examples = pathlib.Path(sys.argv[1])
models = sorted(path.name for path in examples.glob("*.mps"))
with tempfile.TemporaryDirectory() as folder:
    subprocess.run([sys.executable, str(examples / "make_models"), folder], check=True)
    made = sorted(path.name for path in pathlib.Path(folder).iterdir())
    _, different, missing = filecmp.cmpfiles(examples, folder, models, shallow=False)
if made != models or different or missing:
    sys.exit(f"made {made}, expected {models}; different: {different}, missing: {missing}")
