"""Solvers as black boxes: the command that runs one, and what its output says."""
import json
import math
import os
import re
import subprocess
import tempfile
from dataclasses import dataclass, field
from typing import Optional

KILL_GRACE = 1.1, 10.0  # a solver that ignores its time limit is killed at limit * 1.1 + 10 seconds


@dataclass
class Outcome:
    status: str  # optimal, infeasible, unbounded, inf_or_unbd, limit, failed
    objective: Optional[float] = None
    bound: Optional[float] = None
    iterations: Optional[float] = None
    nodes: Optional[float] = None
    wall: float = 0.0
    cpu: float = 0.0
    peak_mb: float = 0.0
    quality: dict = field(default_factory=dict)  # violation name -> amount, where the solver tells
    operations: dict = field(default_factory=dict)  # simplex operation -> (calls, calls times density, seconds)
    cleanup: Optional[float] = None  # simplex iterations after postsolve, where they were needed and are told
    note: str = ""


class Contestant:
    """One column of the tables. Subclasses give command() and parse()."""

    def __init__(self, label):
        self.label = label

    def handles(self, instance):
        return True

    def commands(self, model, instance, limit, work):
        """Commands to try until one's output parses."""
        raise NotImplementedError

    def parse(self, text, work):
        """Outcome, or None when the output cannot be understood."""
        raise NotImplementedError

    def run(self, measure, model, instance, limit):
        with tempfile.TemporaryDirectory() as work:
            last = None
            for command in self.commands(model, instance, limit, work):
                last = self._run_one(measure, command, limit, work)
                if last.status != "failed":
                    break
            return last

    def _run_one(self, measure, command, limit, work):
        report, output = os.path.join(work, "report"), os.path.join(work, "output")
        kill_after = limit * KILL_GRACE[0] + KILL_GRACE[1]
        with open(output, "w", encoding="utf-8") as stream:
            subprocess.run([measure, str(kill_after), report] + command, stdin=subprocess.DEVNULL, stdout=stream,
                           stderr=subprocess.STDOUT, cwd=work, check=True)
        with open(report, encoding="utf-8") as stream:
            wall, cpu, peak_kb, code, killed = (float(word) for word in stream.read().split())
        with open(output, encoding="utf-8", errors="replace") as stream:
            text = stream.read()
        outcome = None
        if killed:
            outcome = Outcome("limit", note="killed")
        elif code == 0:
            outcome = self.parse(text, work)
        if outcome is None:
            last_line = (text.strip().splitlines() or [""])[-1]
            outcome = Outcome("failed", note=f"exit code {code:.0f}: {last_line}"[:120])
        outcome.wall, outcome.cpu, outcome.peak_mb = wall, cpu, peak_kb / 1024
        return outcome


class Zorvex(Contestant):
    STATUS = {2: "optimal", 3: "infeasible", 4: "inf_or_unbd", 5: "unbounded"}
    QUALITY = {"bound": "max_bound_violation", "constraint": "max_constraint_violation",
               "integrality": "max_integrality_violation", "dual": "max_dual_violation",
               "complementarity": "max_complementarity_violation"}

    def __init__(self, label, program, params):
        super().__init__(label)
        self.program, self.params = program, params

    def commands(self, model, instance, limit, work):
        command = [self.program, "solve", model, f"TimeLimit={limit:g}", "Threads=1"] + self.params
        command += ["--json", os.path.join(work, "summary.json")] + (["--relax"] if instance.relax else [])
        return [command]

    def parse(self, text, work):
        try:
            with open(os.path.join(work, "summary.json"), encoding="utf-8") as stream:
                summary = json.load(stream)
        except (OSError, ValueError):
            return None
        status = self.STATUS.get(summary["status"], "limit")
        quality = {name: summary[key] for name, key in self.QUALITY.items() if summary[key] is not None}
        iterations = (summary["iterations"] or 0) + (summary["barrier_iterations"] or 0)
        note = "" if status != "limit" else summary["status_name"] or ""
        return Outcome(status, summary["objective"], summary["bound"], iterations, summary["nodes"], quality=quality,
                       operations=self.operations(text), note=note,
                       cleanup=number(r"Cleanup after postsolve: (\d+) iterations", text))

    @staticmethod
    def operations(text):
        """Sums over the simplex runs of a solve, which logs them with ZORV_PAR_ITEST=1."""
        found = {}
        pattern = r"^Operation (\w+) +(\d+) calls, density +([\d.]+)%, +([\d.]+) seconds"
        for name, calls, density, seconds in re.findall(pattern, text, re.MULTILINE):
            known = found.get(name, (0, 0.0, 0.0))
            found[name] = (known[0] + int(calls), known[1] + int(calls) * float(density) / 100, known[2] + float(seconds))
        return found


def number(pattern, text):
    """The number that the last match of `pattern` captures, or None."""
    found = re.findall(pattern, text)
    return float(found[-1]) if found and math.isfinite(float(found[-1])) else None


class Clp(Contestant):
    def __init__(self, label="clp", method="-dualsimplex"):
        super().__init__(label)
        self.method = method

    def handles(self, instance):
        return not instance.is_mip

    def commands(self, model, instance, limit, work):
        return [["clp", model, "-seconds", f"{limit:g}", self.method]]

    def parse(self, text, work):
        last = re.findall(r"^(Optimal|Primal ?Infeasible|Dual ?Infeasible|Stopped)\b.*objective.* iterations", text,
                          re.M | re.I)
        if not last:
            return None
        status = {"o": "optimal", "p": "infeasible", "d": "unbounded", "s": "limit"}[last[-1][0].lower()]
        return Outcome(status, number(r"objective (\S+) - \d+ iterations", text) if status == "optimal" else None,
                       iterations=number(r"objective \S+ - (\d+) iterations", text))


class Cbc(Contestant):
    def __init__(self, label="cbc"):
        super().__init__(label)

    def handles(self, instance):
        return instance.is_mip

    def commands(self, model, instance, limit, work):
        # The gap is the one the other programs stop at by default.
        return [["cbc", model, "-seconds", f"{limit:g}", "-timeMode", "elapsed", "-ratioGap", "1e-4", "-threads", "0",
                 "-solve"]]

    def parse(self, text, work):
        result = re.findall(r"^Result - (.*)$", text, re.M)
        objective = number(r"Objective value:\s+(\S+)", text)
        iterations, nodes = number(r"Total iterations:\s+(\d+)", text), number(r"Enumerated nodes:\s+(\d+)", text)
        if not result:
            infeasible = re.search(r"infeasible", text, re.I)
            return Outcome("infeasible") if infeasible else None
        if "Optimal solution found" in result[-1]:
            status = "optimal"
        elif "infeasible" in result[-1]:
            status = "infeasible"
        elif "unbounded" in result[-1]:
            status = "unbounded"
        else:
            status = "limit"
        return Outcome(status, objective, number(r"Lower bound:\s+(\S+)", text), iterations, nodes)


class Glpsol(Contestant):
    def __init__(self, label="glpsol"):
        super().__init__(label)

    def commands(self, model, instance, limit, work):
        tail = [model, "--tmlim", f"{max(1, round(limit))}", "-w", os.path.join(work, "solution")]
        tail += ["--nomip"] if instance.relax else (["--mipgap", "1e-4"] if instance.is_mip else [])
        return [["glpsol", "--freemps"] + tail, ["glpsol", "--mps"] + tail]

    def parse(self, text, work):
        try:
            with open(os.path.join(work, "solution"), encoding="utf-8") as stream:
                line = next(line.split() for line in stream if line.startswith("s "))
        except (OSError, StopIteration):
            return None
        if "TIME LIMIT EXCEEDED" in text:
            return Outcome("limit")
        if re.search(r"HAS NO (PRIMAL|INTEGER)? ?FEASIBLE SOLUTION", text):
            return Outcome("infeasible")
        if re.search(r"HAS (NO DUAL FEASIBLE|UNBOUNDED)", text):
            return Outcome("unbounded")
        optimal = line[4:6] == ["f", "f"] if line[1] == "bas" else line[4] == "o"
        optimal = optimal or "MIP GAP TOLERANCE REACHED" in text
        return Outcome("optimal" if optimal else "limit", float(line[-1]))


PEERS = {"clp": Clp, "clp-barrier": lambda: Clp("clp-barrier", "-barrier"), "cbc": Cbc, "glpsol": Glpsol}
