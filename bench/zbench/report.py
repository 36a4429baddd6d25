"""Tables: one TSV line a run, and a summary with every contestant's figures as ratios to the first one's."""
import math

from zbench import verdict

COLUMNS = ["set", "instance", "mode", "solver", "verdict", "status", "objective", "bound", "expected", "wall", "cpu",
           "iterations", "nodes", "peak_mb", "cleanup", "note"]
NODE_SHIFT = 10.0
ITERATION_SHIFT = 10.0


def time_shift(is_mip):
    """Seconds. Differences far below it do not count: process start, file reading."""
    return 1.0 if is_mip else 0.05


def shifted_mean(values, shift):
    """Shifted geometric mean."""
    values = list(values)
    if not values:
        return None
    return math.exp(sum(math.log(max(0.0, value) + shift) for value in values) / len(values)) - shift


class Run:
    """One instance solved by one contestant."""

    def __init__(self, set_name, instance, solver, outcome, limit):
        self.set_name, self.instance, self.solver, self.outcome, self.limit = set_name, instance, solver, outcome, limit
        self.verdict, self.reason = verdict.judge(outcome, instance.expected, instance.is_mip)

    @property
    def solved(self):
        return self.verdict in verdict.SOLVED

    @property
    def time(self):
        """What counts in a mean: not solved, or solved wrongly, costs the whole time limit."""
        return self.outcome.wall if self.solved else max(self.limit, self.outcome.wall)

    def row(self):
        out = self.outcome
        cells = [self.set_name, self.instance.path, "relax" if self.instance.relax else "solve", self.solver,
                 self.verdict, out.status, show(out.objective), show(out.bound), self.instance.expected or "?",
                 f"{out.wall:.4f}", f"{out.cpu:.4f}", show(out.iterations), show(out.nodes), f"{out.peak_mb:.1f}",
                 show(out.cleanup), self.reason.replace("\t", " ")]
        return "\t".join(cells)


def show(value):
    return "-" if value is None else f"{value:.10g}"


def ratio(value, base):
    return "-" if value is None or not base else f"{value / base:.2f}"


def summary(runs, solvers):
    """Lines of text. Means run over the instances that every compared pair attempted."""
    lines = [f"{'solver':<24}{'tried':>6}{'right':>6}{'unkn':>6}{'inexact':>8}{'wrong':>6}{'limit':>6}{'failed':>7}"
             f"{'time':>9}{'ratio':>7}{'both':>7}{'iter':>7}{'nodes':>7}{'peak':>7}{'worst':>7}"]
    by_solver = {solver: {(r.set_name, r.instance): r for r in runs if r.solver == solver} for solver in solvers}
    first = by_solver[solvers[0]]
    for solver in solvers:
        lines.append(summary_line(solver, by_solver[solver], first))
    lines += ["", "time: shifted geometric mean, seconds, whole process; an instance not solved costs the limit.",
              f"ratio: this solver's over {solvers[0]}'s on the instances that both tried; both: that both solved;",
              "iter, nodes: ratios where both solved; peak: geometric mean of memory ratios, worst: the largest."]
    return lines


def summary_line(solver, runs, first):
    counts = {kind: sum(r.verdict == kind for r in runs.values())
              for kind in (verdict.RIGHT, verdict.UNKNOWN, verdict.INEXACT, verdict.WRONG, verdict.LIMIT, verdict.FAILED)}
    common = [(runs[key], first[key]) for key in runs if key in first]
    solved = [(mine, base) for mine, base in common if mine.solved and base.solved]
    shift = time_shift(any(r.instance.is_mip for r in runs.values()))

    def mean_ratio(pairs, value, value_shift):
        pairs = [(value(a), value(b)) for a, b in pairs if value(a) is not None and value(b) is not None]
        if not pairs:
            return "-"
        top, bottom = (shifted_mean(side, value_shift) + value_shift for side in zip(*pairs))
        return ratio(top, bottom)

    memory = [a.outcome.peak_mb / b.outcome.peak_mb for a, b in common if b.outcome.peak_mb > 0]
    mean_time = shifted_mean((r.time for r in runs.values()), shift)
    return (f"{solver:<24}{len(runs):>6}{counts['right']:>6}{counts['unknown']:>6}{counts['inexact']:>8}"
            f"{counts['wrong']:>6}{counts['limit']:>6}{counts['failed']:>7}"
            f"{'-' if mean_time is None else format(mean_time, '.3f'):>9}"
            f"{mean_ratio(common, lambda r: r.time, shift):>7}{mean_ratio(solved, lambda r: r.time, shift):>7}"
            f"{mean_ratio(solved, lambda r: r.outcome.iterations, ITERATION_SHIFT):>7}"
            f"{mean_ratio(solved, lambda r: r.outcome.nodes, NODE_SHIFT):>7}"
            f"{show_memory(shifted_mean(memory, 0.0)):>7}{show_memory(max(memory, default=None)):>7}")


def operations(runs, solvers):
    """Where the simplex spent its time, over all runs of a solver; no lines without statistics."""
    lines = []
    for solver in solvers:
        total = {}
        for run in runs:
            if run.solver != solver:
                continue
            for name, counts in run.outcome.operations.items():
                total[name] = tuple(a + b for a, b in zip(total.get(name, (0, 0.0, 0.0)), counts))
        seconds = sum(counts[2] for counts in total.values())
        for name, (calls, filled, spent) in total.items():
            density = f"{filled / calls:8.2%}" if calls else "       -"
            lines.append(f"{solver:<24}{name:<12}{calls:>10} calls{density} dense{spent:>10.3f} s"
                         f"{spent / seconds if seconds else 0:>8.1%}")
        if total:
            cleanups = [r.outcome.cleanup for r in runs if r.solver == solver and r.outcome.cleanup is not None]
            lines.append(f"{solver:<24}{'cleanup':<12}{sum(cleanups):>10.0f} iterations after postsolve, on "
                         f"{len(cleanups)} instances")
    return lines


def show_memory(value):
    return "-" if value is None else f"{value:.2f}"


def failures(runs):
    """One line for every run that is not right, the user's list of what to look at."""
    kinds = (verdict.WRONG, verdict.INEXACT, verdict.FAILED, verdict.LIMIT)
    return [f"{r.verdict:<8}{r.solver:<24}{r.instance.path}{' (relax)' if r.instance.relax else ''}: "
            f"{r.reason or r.outcome.status}" for kind in kinds for r in runs if r.verdict == kind]
