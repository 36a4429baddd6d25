#!/usr/bin/env python3
"""tools/check_layers accepts legal trees and names every kind of breach."""
import pathlib
import subprocess
import sys
import tempfile

# files of a tree, then the text that the checker must print (None: it must accept)
CASES = [
    ({"src/base/a.hpp": "", "src/linalg/b.cpp": '#include "base/a.hpp"\n#include <vector>\n'}, None),
    ({"src/linalg/a.hpp": "", "src/base/b.cpp": '#include "linalg/a.hpp"\n'}, "base must not include from linalg"),
    ({"src/simplex/a.hpp": "", "src/presolve/b.cpp": '#include "simplex/a.hpp"\n'}, "presolve must not include"),
    ({"src/simplex/a.hpp": "", "src/model/b.cpp": '#include "simplex/a.hpp"\n'}, "model must not include from simplex"),
    ({"src/env/a.hpp": "", "src/mip/b.cpp": '#include "env/a.hpp"\n'}, "mip must not include from env"),
    ({"src/io/a.hpp": "", "src/model/b.cpp": '#  include "io/a.hpp"\n'}, "model must not include from io"),
    ({"src/mip/a.hpp": "", "src/io/c.hpp": "", "src/opt/b.cpp": '#include "mip/a.hpp"\n#include "io/c.hpp"\n'}, None),
    ({"src/opt/a.hpp": "", "src/io/b.cpp": '#include "opt/a.hpp"\n'}, "io must not include from opt"),
    ({"src/simplex/b.cpp": '#include "zorvex.h"\n'}, "must not see zorvex.h"),
    ({"src/model/b.cpp": '#include "zorvex.h"\n'}, None),
    ({"src/base/b.cpp": '#include "a.hpp"\n', "src/base/a.hpp": ""}, "not a path relative to src"),
    ({"src/base/b.cpp": "#include <base/a.hpp>\n", "src/base/a.hpp": ""}, "angle brackets"),
    ({"src/utils/b.cpp": ""}, "no place in the layering"),
    ({"src/base/a.hpp": '#include "base/b.hpp"\n', "src/base/b.hpp": '#include "base/a.hpp"\n'}, "include cycle"),
    ({"src/base/a.cpp": "\n" * 801}, "801 lines"),
    ({"src/base/a.hpp": "", "cli/main.cpp": '#include "base/a.hpp"\n'}, "cli sees only zorvex.h"),
    ({"src/base/a.hpp": "", "cli/main.cpp": '#include "cli.hpp"\n#include "zorvex.h"\n', "cli/cli.hpp": ""}, None),
    ({"src/base/a.hpp": "", "examples/a.c": '#include "../src/base/a.hpp"\n'}, "examples sees only zorvex.h"),
]


def main():
    tool, failed = sys.argv[1], 0
    for files, expected in CASES:
        with tempfile.TemporaryDirectory() as root:
            for name, text in files.items():
                path = pathlib.Path(root, name)
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text)
            run = subprocess.run([sys.executable, tool, root], capture_output=True, text=True)
        right = run.returncode == (1 if expected else 0) and (expected or "") in run.stderr
        if not right:
            failed += 1
            print(f"{files}: expected {expected}, got {run.returncode}: {run.stderr}")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
