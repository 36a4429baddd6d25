#!/usr/bin/env python3
"""Model files between Zorvex and other programs: what one writes, the other reads to the same optimum.

Usage: exchange_test.py PROGRAM MODELS. Skips what needs a program, a package or models that are not there.
"""
import importlib.util
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

PROGRAM = os.path.abspath(sys.argv[1])
MODELS = pathlib.Path(os.environ.get("ZORVEX_MODELS", sys.argv[2]))
MATHPROG = pathlib.Path("/usr/share/doc/glpk-utils/examples")

# Shared models with ranges (boeing, kb2's none), integers, free and bounded columns, negative bounds.
WRITTEN = ["lp/afiro", "lp/adlittle", "lp/blend", "lp/sc105", "lp/kb2", "lp/israel", "lp/boeing2", "lp/vtp-base",
           "lp/recipe", "lp/bore3d", "lp/grow7", "lp/share1b", "mip/p0033", "mip/flugpl", "mip/stein27", "mip/gt2",
           "mip/egout"]
# Examples that every solver finishes at once.
EXAMPLES = ["assign", "bpp", "cf12a", "cf12b", "cflsq", "color", "cpp", "dea", "diet", "dist", "egypt", "fctp", "food",
            "food2", "gap", "graceful", "maxcut", "maxflow", "mfasp", "mfvsp", "min01ks", "misp", "money", "mvcp",
            "plan", "powpl25h", "powplant", "prod", "qfit", "queens", "shiftcov", "spp", "stigler", "sudoku", "todd",
            "toto", "train", "transp", "wolfra6d", "xyacfs", "yacfs", "zebra"]


def run(*words, **options):
    return subprocess.run([str(word) for word in words], capture_output=True, text=True, stdin=subprocess.DEVNULL,
                          timeout=120, **options)


def shared_optima():
    lines = (MODELS / "manifest.tsv").read_text().splitlines()[1:]
    return {line.split("\t")[0]: line.split("\t")[6] for line in lines}


@unittest.skipUnless((MODELS / "manifest.tsv").exists(), "shared models are not available (set ZORVEX_MODELS)")
class Exchange(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)

    def need(self, tool):
        if shutil.which(tool) is None:
            self.skipTest(f"{tool} is not installed")

    def close(self, a, b, what):
        self.assertLessEqual(abs(a - b), 2e-6 * max(1, abs(b)), what)

    def ours(self, name):
        done = run(PROGRAM, "solve", name, "MIPGap=0", "--json", "out.json", cwd=self.root)
        self.assertEqual(done.returncode, 0, f"{name}: {done.stderr}")
        summary = json.loads((self.root / "out.json").read_text())
        self.assertEqual(summary["status_name"], "OPTIMAL", name)
        return summary["objective"]

    def glpsol(self, *words):
        done = run("glpsol", *words, "-o", "out.txt", cwd=self.root)
        self.assertEqual(done.returncode, 0, f"{words}: {done.stdout}")
        text = (self.root / "out.txt").read_text()
        self.assertIn("OPTIMAL", text, f"{words}")
        value = re.search(r"Objective:.*= (\S+)", text)
        return float(value.group(1)) if value else 0.0

    def cbc(self, name):
        done = run("cbc", name, "solve", "quit", cwd=self.root)
        self.assertNotIn("Invalid", done.stdout, name)
        values = re.findall(r"(?:Objective value:|Optimal objective) +(\S+)", done.stdout)
        self.assertTrue(values, f"{name}: {done.stdout}")
        return float(values[-1])

    def check_written(self, suffix, solve):
        for path, optimum in shared_optima().items():
            name = path.split(".")[0]
            if name not in WRITTEN:
                continue
            file = pathlib.Path(name).name + suffix
            done = run(PROGRAM, "convert", MODELS / path, file, cwd=self.root)
            self.assertEqual(done.returncode, 0, done.stderr)
            self.close(solve(file), float(optimum), file)

    def test_glpsol_reads_our_lp(self):
        self.need("glpsol")
        self.check_written(".lp", lambda file: self.glpsol("--lp", file))
        self.check_written(".rlp", lambda file: self.glpsol("--lp", file))

    def test_glpsol_reads_our_mps(self):
        self.need("glpsol")
        self.check_written(".mps", lambda file: self.glpsol("--freemps", file))

    def test_cbc_reads_our_lp(self):
        self.need("cbc")
        self.check_written(".lp", self.cbc)

    def test_cbc_reads_our_mps(self):
        self.need("cbc")
        self.check_written(".mps", self.cbc)

    def test_we_read_what_glpsol_writes(self):
        self.need("glpsol")
        if not MATHPROG.is_dir():
            self.skipTest("the examples of glpk-utils are not installed")
        for name in EXAMPLES:
            model = MATHPROG / f"{name}.mod"
            optimum = self.glpsol("-m", model, "--wlp", "out.lp", "--wfreemps", "out.mps")
            self.close(self.ours("out.lp"), optimum, f"{name} as LP")
            # MPS files of glpsol do not say that they maximise: read as minimisation many have no optimum.
            if "Maximize" not in (self.root / "out.lp").read_text():
                self.close(self.ours("out.mps"), self.glpsol("--freemps", "out.mps"), f"{name} as MPS")

    def pulp_model(self, pulp, sense):
        problem = pulp.LpProblem("shop", sense)
        made = [pulp.LpVariable(f"made_{k}", 0, 9, pulp.LpInteger) for k in range(4)]
        open_ = pulp.LpVariable("open", cat=pulp.LpBinary)
        slack = pulp.LpVariable("slack", None, 3)
        free = pulp.LpVariable("free_one", None, None)
        sign = 1 if sense == pulp.LpMinimize else -1
        problem += sign * (pulp.lpSum((k + 2) * x for k, x in enumerate(made)) + 7.5 * open_ - slack + 0.25 * free)
        problem += pulp.lpSum(made) + slack >= 11.25, "demand"
        problem += made[0] + 2 * made[1] - 3 * made[2] <= 4 * open_ + 1, "link"
        problem += made[2] + made[3] == 5, "exact"
        problem += free >= -2 - made[3]
        return problem

    def test_we_read_what_pulp_writes(self):
        if importlib.util.find_spec("pulp") is None:
            self.skipTest("python3-pulp is not installed")
        self.need("cbc")
        import pulp
        for sense in (pulp.LpMinimize, pulp.LpMaximize):
            problem = self.pulp_model(pulp, sense)
            problem.writeLP(str(self.root / "out.lp"))
            problem.writeMPS(str(self.root / "out.mps"), mpsSense=pulp.LpMinimize)
            problem.solve(pulp.COIN_CMD(path=shutil.which("cbc"), msg=False))
            optimum = pulp.value(problem.objective)
            self.assertEqual(pulp.LpStatus[problem.status], "Optimal")
            self.close(self.ours("out.lp"), optimum, "LP")
            self.close(self.ours("out.mps"), optimum if sense == pulp.LpMinimize else -optimum, "MPS")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
