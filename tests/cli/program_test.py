#!/usr/bin/env python3
"""The program from the outside: exit codes, where text goes, the JSON summary, checking and converting, Ctrl-C."""
import json
import os
import pathlib
import random
import signal
import subprocess
import sys
import tempfile
import time
import unittest

PROGRAM = os.path.abspath(sys.argv[1])

KEYS = ["model", "rows", "columns", "nonzeros", "status", "status_name", "objective", "bound", "gap", "solutions",
        "runtime", "iterations", "barrier_iterations", "nodes", "max_bound_violation", "max_constraint_violation",
        "max_integrality_violation", "max_dual_violation", "max_complementarity_violation", "version"]

# min -3x - 2y, x + y <= 4, x + 3y <= 6, x <= 3: -11 at (3, 1).
LP = """NAME small
ROWS
 N cost
 L first
 L second
COLUMNS
 x cost -3 first 1
 x second 1
 y cost -2 first 1
 y second 3
RHS
 rhs first 4 second 6
BOUNDS
 UP bnd x 3
ENDATA
"""

# Knapsack: max 8a + 11b + 6c + 4d, 5a + 7b + 4c + 3d <= 14 over binaries: 21 at b, c, d; its relaxation has 22.
MIP = """NAME knapsack
ROWS
 N cost
 L room
COLUMNS
 MARKER 'MARKER' 'INTORG'
 a cost -8 room 5
 b cost -11 room 7
 c cost -6 room 4
 d cost -4 room 3
 MARKER 'MARKER' 'INTEND'
RHS
 rhs room 14
BOUNDS
 BV bnd a
 BV bnd b
 BV bnd c
 BV bnd d
ENDATA
"""

INFEASIBLE = LP.replace("UP bnd x 3", "LO bnd x 5")
UNBOUNDED = LP.replace(" L first", " G first").replace(" L second", " G second").replace(" UP bnd x 3\n", "")


def market_split(rows=5, columns=40, seed=7):
    """Equality knapsacks that no tree search finishes soon."""
    draw = random.Random(seed)
    lines = ["NAME split", "ROWS", " N cost"] + [f" E r{i}" for i in range(rows)] + ["COLUMNS"]
    sums = [0] * rows
    lines.append(" M1 'MARKER' 'INTORG'")
    for j in range(columns):
        for i in range(rows):
            weight = draw.randint(1, 99)
            sums[i] += weight
            lines.append(f" x{j} r{i} {weight}")
    lines.append(" M2 'MARKER' 'INTEND'")
    for i in range(rows):
        lines += [f" p{i} cost 1 r{i} 1", f" n{i} cost 1 r{i} -1"]
    lines += ["RHS"] + [f" rhs r{i} {sums[i] // 2}" for i in range(rows)] + ["BOUNDS"]
    return "\n".join(lines + [f" BV bnd x{j}" for j in range(columns)] + ["ENDATA", ""])


class Program(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        texts = {"lp": LP, "mip": MIP, "infeasible": INFEASIBLE, "unbounded": UNBOUNDED, "broken": LP[:150]}
        for name, text in texts.items():
            (self.root / f"{name}.mps").write_text(text)

    def run_program(self, *words):
        return subprocess.run([PROGRAM] + [str(word) for word in words], capture_output=True, text=True, cwd=self.root,
                              stdin=subprocess.DEVNULL, timeout=300)

    def solve(self, *words):
        run = self.run_program("solve", *words, "--json", "out.json")
        self.assertEqual(run.returncode, 0, run.stdout + run.stderr)
        self.assertEqual(run.stderr, "")
        return json.loads((self.root / "out.json").read_text())

    def test_json(self):
        lp = self.solve("lp.mps")
        self.assertEqual(list(lp), KEYS)
        self.assertEqual((lp["model"], lp["rows"], lp["columns"], lp["nonzeros"]), ("lp.mps", 2, 2, 4))
        self.assertEqual((lp["status"], lp["status_name"], lp["version"]), (2, "OPTIMAL", "4.6.1"))
        self.assertAlmostEqual(lp["objective"], -11.0, places=9)
        for key in ("max_bound_violation", "max_constraint_violation", "max_dual_violation"):
            self.assertLessEqual(lp[key], 1e-9)

        mip = self.solve("mip.mps")
        self.assertEqual(mip["status"], 2)
        self.assertAlmostEqual(mip["objective"], -21.0, places=9)
        self.assertLessEqual(mip["gap"], 1e-4)
        self.assertGreaterEqual(mip["solutions"], 1)

        infeasible = self.solve("infeasible.mps")
        self.assertEqual((infeasible["status"], infeasible["objective"], infeasible["gap"]), (3, None, None))
        self.assertIn(self.solve("unbounded.mps")["status"], (4, 5))

    def test_relax(self):
        self.assertAlmostEqual(self.solve("mip.mps", "--relax")["objective"], -22.0, places=6)

    def test_exit_codes_and_streams(self):
        cases = [  # words, exit code, text in standard error
            (["solve", "lp.mps"], 0, ""),
            (["solve", "infeasible.mps", "OutputFlag=0"], 0, ""),
            (["--help"], 0, ""),
            (["--version"], 0, ""),
            (["params"], 0, ""),
            ([], 1, "subcommand"),
            (["slove", "lp.mps"], 1, ""),
            (["solve"], 1, "model"),
            (["solve", "lp.mps", "--nonsense"], 1, "nonsense"),
            (["solve", "lp.mps", "NoParameter=1"], 1, "NoParameter"),
            (["solve", "lp.mps", "TimeLimit=soon"], 1, "TimeLimit"),
            (["solve", "lp.mps", "--solution", "out.mps"], 1, ".sol"),
            (["params", "NoParameter"], 1, "NoParameter"),
            (["solve", "lp.mps", "--basis", "out.sol"], 1, ".bas"),
            (["solve", "none.mps"], 2, "none.mps"),
            (["solve", "broken.mps"], 2, "broken.mps"),
            (["solve", "lp.mps", "--json", "no/such/folder.json"], 2, "no/such/folder.json"),
            (["info", "none.mps"], 2, "none.mps"),
            (["convert", "lp.mps", "out.txt"], 2, "out.txt"),
            (["check", "lp.mps", "none.sol"], 2, "none.sol"),
        ]
        for words, code, text in cases:
            with self.subTest(words=words):
                run = self.run_program(*words)
                self.assertEqual(run.returncode, code, run.stdout + run.stderr)
                self.assertIn(text, run.stderr)
                self.assertEqual(run.stderr == "", code == 0)
        self.assertEqual(self.run_program("solve", "lp.mps", "OutputFlag=0").stdout, "")
        self.assertIn("Optimize a model with 2 rows, 2 columns and 4 nonzeros\n", self.run_program("solve", "lp.mps").stdout)

    def test_check(self):
        cases = [  # solution text, exit code, text in standard output
            ("x 3\ny 1\n", 0, "objective    -11\n"),
            ("x 3.1\ny 0.5\n", 3, "worst: x"),
            ("x 3\ny 2\n", 3, "worst: second"),
            ("x 3\n", 0, "1 variables are not in the file"),
            ("x 3\nz 1\n", 2, ""),
        ]
        for text, code, expected in cases:
            with self.subTest(text=text):
                (self.root / "try.sol").write_text(text)
                run = self.run_program("check", "lp.mps", "try.sol")
                self.assertEqual(run.returncode, code, run.stdout + run.stderr)
                self.assertIn(expected, run.stdout)

    def test_solution_is_checked_and_starts_again(self):
        self.solve("mip.mps", "--solution", "best.sol")
        run = self.run_program("check", "mip.mps", "best.sol")
        self.assertEqual(run.returncode, 0, run.stdout)
        self.assertIn("objective    -21\n", run.stdout)
        # Nothing is allowed but the start itself.
        again = self.solve("mip.mps", "--start", "best.sol", "SolutionLimit=1")
        self.assertAlmostEqual(again["objective"], -21.0, places=9)
        run = self.run_program("solve", "infeasible.mps", "--solution", "none.sol")
        self.assertEqual(run.returncode, 0)
        self.assertIn("no solution", run.stderr)
        self.assertFalse((self.root / "none.sol").exists())

    def test_basis_is_written_and_starts_again(self):
        cold = self.solve("lp.mps", "Presolve=0", "--basis", "best.bas.gz")
        self.assertGreater(cold["iterations"], 0)
        warm = self.solve("lp.mps", "Presolve=0", "--start", "best.bas.gz")
        self.assertEqual(warm["iterations"], 0)
        self.assertAlmostEqual(warm["objective"], -11.0, places=9)
        (self.root / "one.bas").write_text("NAME\n XU x second\n XU nobody first\nENDATA\n")
        run = self.run_program("solve", "lp.mps", "--start", "one.bas")
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertIn("Warning: 1 lines of basis file 'one.bas' do not fit the model", run.stdout)
        run = self.run_program("solve", "mip.mps", "--basis", "none.bas")
        self.assertEqual(run.returncode, 0)
        self.assertIn("no basis", run.stderr)
        self.assertFalse((self.root / "none.bas").exists())

    def test_start_values(self):
        # Nothing is allowed but the start itself, completed.
        (self.root / "part.mst").write_text("# b, c and d\nb 1\nc 1\nd 1\nunknown 4\n")
        run = self.run_program("solve", "mip.mps", "--start", "part.mst", "SolutionLimit=1", "--json", "out.json")
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertIn("Warning: 1 names in file 'part.mst' are not variables of the model", run.stdout)
        self.assertAlmostEqual(json.loads((self.root / "out.json").read_text())["objective"], -21.0, places=9)
        (self.root / "bad.mst").write_text("b 1\nc one\n")
        run = self.run_program("solve", "mip.mps", "--start", "bad.mst")
        self.assertEqual(run.returncode, 2)
        self.assertIn("line 2 of file bad.mst is wrong: c one", run.stderr)

    def test_convert(self):
        for name in ("copy.mps", "copy.mps.gz", "copy.rew", "copy.lp", "copy.rlp.gz"):
            self.assertEqual(self.run_program("convert", "mip.mps", name).returncode, 0)
            self.assertAlmostEqual(self.solve(name)["objective"], -21.0, places=9)

    def test_info(self):
        run = self.run_program("info", "mip.mps")
        self.assertEqual(run.returncode, 0, run.stderr)
        for text in ("rows         1\n", "columns      4\n", "binary             4\n", "knapsack           1\n",
                     "objective      [4, 11]\n"):
            self.assertIn(text, run.stdout)

    def test_params(self):
        listed = self.run_program("params").stdout.splitlines()
        self.assertEqual(len(listed), 1 + 76)
        self.assertEqual(len(self.run_program("params", "--all").stdout.splitlines()), 1 + 152)
        one = self.run_program("params", "feasibility_tol").stdout
        for text in ("FeasibilityTol", "double", "[1e-09, 0.01]", "1e-06", "violation"):
            self.assertIn(text, one)

    def test_interrupt(self):
        (self.root / "split.mps").write_text(market_split())
        command = [PROGRAM, "solve", "split.mps", "TimeLimit=120", "--json", "out.json"]
        log = self.root / "log"
        with open(log, "w") as stream:
            process = subprocess.Popen(command, stdout=stream, cwd=self.root, stdin=subprocess.DEVNULL)
        deadline = time.monotonic() + 60
        while "Optimize a model" not in log.read_text() and time.monotonic() < deadline:
            os.sched_yield()
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(timeout=60), 0, log.read_text())
        self.assertIn("Interrupt request received", log.read_text())
        summary = json.loads((self.root / "out.json").read_text())
        self.assertEqual(summary["status_name"], "INTERRUPTED")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
