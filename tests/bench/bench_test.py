#!/usr/bin/env python3
"""The benchmark runner's arithmetic and judgement, and a whole run over a stand-in solver."""
import math
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest
import xml.dom.minidom

BENCH, MEASURE = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
sys.path.insert(0, str(BENCH))

from zbench import contestants, instances, profile, report, verdict  # noqa: E402  (the path comes first)

LP = instances.Instance("lp/a.mps.gz", False, "lp", "100")

# A program that answers like `zorvex solve`: status and objective by the model's file name.
STAND_IN = """#!/usr/bin/env python3
import json, sys
name = sys.argv[2]
if "crash" in name:
    sys.exit("boom")
status = 3 if "infeasible" in name else 2
keys = ["bound", "iterations", "barrier_iterations", "nodes", "status_name", "max_bound_violation",
        "max_integrality_violation", "max_dual_violation", "max_complementarity_violation"]
summary = dict.fromkeys(keys)
summary.update(status=status, objective=None if status == 3 else 5.0,
               max_constraint_violation=1e-3 if "rough" in name else 0.0)
json.dump(summary, open(sys.argv[sys.argv.index("--json") + 1], "w"))
"""


class Judgement(unittest.TestCase):
    def test_table(self):
        optimal = dict(status="optimal")
        cases = [  # outcome, expected, MIP, verdict
            (dict(optimal, objective=100.00005), "100", False, "right"),
            (dict(optimal, objective=100.0002), "100", False, "wrong"),
            (dict(optimal, objective=100.005), "100", True, "right"),
            (dict(optimal, objective=100.02), "100", True, "wrong"),
            (dict(optimal, objective=0.12), "0.1", False, "right"),  # published to one digit
            (dict(optimal, objective=0.16), "0.1", False, "wrong"),
            (dict(optimal, objective=math.nan), "100", False, "wrong"),
            (dict(optimal, objective=None), "100", False, "wrong"),
            (dict(optimal, objective=100.0), "infeasible", False, "wrong"),
            (dict(optimal, objective=100.0), None, False, "unknown"),
            (dict(optimal, objective=100.0, quality={"dual": 2e-6}), "100", False, "inexact"),
            (dict(optimal, objective=100.0, quality={"dual": 1e-6}), "100", False, "right"),
            (dict(optimal, objective=100.0, quality={"complementarity": 9e-5}), "100", False, "right"),
            (dict(optimal, objective=100.0, quality={"bound": math.nan}), None, False, "inexact"),
            (dict(status="infeasible"), "infeasible", False, "right"),
            (dict(status="unbounded"), "infeasible", False, "wrong"),
            (dict(status="infeasible"), "100", False, "wrong"),
            (dict(status="inf_or_unbd"), "infeasible", False, "right"),
            (dict(status="inf_or_unbd"), "100", False, "wrong"),
            (dict(status="limit"), "100", False, "limit"),
            (dict(status="failed"), "100", False, "failed"),
        ]
        for outcome, expected, is_mip, wanted in cases:
            with self.subTest(outcome=outcome, expected=expected):
                self.assertEqual(verdict.judge(contestants.Outcome(**outcome), expected, is_mip)[0], wanted)


class Figures(unittest.TestCase):
    def run_of(self, solver, wall, solved=True):
        outcome = contestants.Outcome("optimal" if solved else "limit", 100.0, wall=wall, peak_mb=8.0 * wall)
        return report.Run("set", LP, solver, outcome, 60.0)

    def test_shifted_mean(self):
        self.assertAlmostEqual(report.shifted_mean([1.0, 4.0], 0.0), 2.0)
        self.assertAlmostEqual(report.shifted_mean([0.0, 3.0], 1.0), 1.0)
        self.assertIsNone(report.shifted_mean([], 1.0))

    def test_unsolved_costs_the_limit(self):
        self.assertEqual(self.run_of("a", 2.0).time, 2.0)
        self.assertEqual(self.run_of("a", 2.0, solved=False).time, 60.0)

    def test_summary_ratio(self):
        lines = report.summary([self.run_of("a", 0.95), self.run_of("b", 1.95)], ["a", "b"])
        # (1.95 + 0.05) / (0.95 + 0.05), and memory 1.95 / 0.95
        self.assertEqual(lines[2].split()[-6:-4], ["2.00", "2.00"])
        self.assertEqual(lines[2].split()[-1], "2.05")

    def test_profile(self):
        times = {1: {"a": 1.0, "b": 4.0}, 2: {"a": 2.0, "b": None}, 3: {"a": 3.0, "b": 1.0}}
        found, count = profile.factors(times, ["a", "b"], 0.0)
        self.assertEqual((found, count), ({"a": [1.0, 1.0, 3.0], "b": [1.0, 4.0]}, 3))
        self.assertEqual(profile.curve(found["b"], 3, 8.0)[-1], (8.0, 2 / 3))
        xml.dom.minidom.parseString(profile.svg(times, ["a", "b"], 0.0, "1 < 2"))


class Peers(unittest.TestCase):
    def test_output(self):
        cases = [
            (contestants.Clp(), "Optimal objective -464.7531429 - 5 iterations time 0.002", "optimal", -464.7531429, 5),
            (contestants.Clp(), "PrimalInfeasible objective 3.97 - 9 iterations time 0.002", "infeasible", None, 9),
            (contestants.Clp(), "DualInfeasible objective 3.97 - 9 iterations time 0.002", "unbounded", None, 9),
            (contestants.Clp(), "Stopped objective 3.97 - 19 iterations time 0.002", "limit", None, 19),
            (contestants.Cbc(), "Result - Optimal solution found\n\nObjective value:      3089.0\n"
             "Enumerated nodes:   0\nTotal iterations:    219\n", "optimal", 3089.0, 219),
            (contestants.Cbc(), "Result - Stopped on time limit\n\nObjective value:  -1.5\n"
             "Enumerated nodes:   7\nTotal iterations:    65\n", "limit", -1.5, 65),
        ]
        for peer, text, status, objective, iterations in cases:
            with self.subTest(text=text):
                outcome = peer.parse(text, "")
                self.assertEqual((outcome.status, outcome.objective, outcome.iterations),
                                 (status, objective, iterations))
        self.assertIsNone(contestants.Clp().parse("Segmentation fault", ""))
        self.assertIsNone(contestants.Cbc().parse("Segmentation fault", ""))


class WholeRun(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.root = pathlib.Path(self.folder.name)
        self.program = self.root / "stand_in"
        self.program.write_text(STAND_IN)
        self.program.chmod(0o755)
        names = ["good", "crash", "rough", "infeasible", "wrong"]
        (self.root / "list.txt").write_text("".join(f"{name}.mps\n" for name in names))
        rows = [f"{name}.mps\tlp\tsmall\t1\t1\t1\t{'infeasible' if name == 'infeasible' else 5 + (name == 'wrong')}\t\t"
                for name in names]
        header = "path\tkind\tclass\trows\tcols\tnonzeros\toptimum\tnote\tsource"
        (self.root / "manifest.tsv").write_text("\n".join([header] + rows) + "\n")

    def test_runner(self):
        tsv, svg = self.root / "runs.tsv", self.root / "profile.svg"
        command = [sys.executable, BENCH / "run_set", self.root / "list.txt", "--program", self.program, "--measure",
                   MEASURE, "--models", self.root, "--output", tsv, "--profile", svg, "--baseline", self.program]
        run = subprocess.run([str(word) for word in command], capture_output=True, text=True)
        self.assertEqual(run.returncode, 1, run.stdout + run.stderr)
        rows = [line.split("\t") for line in tsv.read_text().splitlines()]
        self.assertEqual(rows[0], report.COLUMNS)
        verdicts = {row[1]: row[4] for row in rows[1:] if row[3] == "zorvex"}
        self.assertEqual(verdicts, {"good.mps": "right", "crash.mps": "failed", "rough.mps": "inexact",
                                    "infeasible.mps": "right", "wrong.mps": "wrong"})
        self.assertEqual(sum(row[3] == "baseline" for row in rows), 5)
        xml.dom.minidom.parse(str(svg))
        # The same run against itself with one answer lost.
        worse = self.root / "worse.tsv"
        worse.write_text(tsv.read_text().replace("\tright\tinfeasible\t", "\tlimit\tlimit\t"))
        run = subprocess.run([sys.executable, str(BENCH / "compare"), str(tsv), str(worse)], capture_output=True, text=True)
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertIn("5 instances in both, 1 solved in both", run.stdout)
        self.assertIn("right -> limit: infeasible.mps", run.stdout)
        self.assertIn("ratio 1.000", run.stdout)

    def test_measure_kills_at_the_limit(self):
        out = self.root / "report"
        subprocess.run([str(MEASURE), "0.2", str(out), "sh", "-c", "sleep 60 & wait"], check=True)
        wall, _, _, code, killed = (float(word) for word in out.read_text().split())
        self.assertTrue(0.2 <= wall < 30.0)
        self.assertEqual((code, killed), (137.0, 1.0))

    def test_measure_peak_memory(self):
        out = self.root / "report"
        peaks = []
        for size in (0, 64):
            program = f"x = bytearray({size} << 20)"
            subprocess.run([str(MEASURE), "60", str(out), sys.executable, "-c", program], check=True)
            peaks.append(float(out.read_text().split()[2]) / 1024)
        self.assertGreater(peaks[1] - peaks[0], 55.0)
        self.assertLess(peaks[1] - peaks[0], 75.0)


if __name__ == "__main__":
    os.environ.pop("ZORVEX_MODELS", None)
    unittest.main(argv=sys.argv[:1])
