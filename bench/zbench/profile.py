"""Performance profile: for each solver the share of instances solved within a factor of the fastest.

Source: E. Dolan, J. More, Math. Program. 91 (2002) 201-213, doi:10.1007/s101070100263. Times are shifted as in the
tables, so that noise on tiny instances does not decide the left edge.
"""
import math
from xml.sax.saxutils import escape

WIDTH, HEIGHT, MARGIN = 720, 420, 60
COLOURS = ["#1b6ca8", "#c8553d", "#3a7d44", "#7b4b94", "#8a6d3b", "#444444"]


def factors(times, solvers, shift):
    """times[instance][solver] is seconds or None. Returns solver -> sorted factors over the fastest, and the count."""
    found = {solver: [] for solver in solvers}
    for row in times.values():
        solved = [seconds for seconds in row.values() if seconds is not None]
        for solver in solvers:
            if row.get(solver) is not None:
                found[solver].append((row[solver] + shift) / (min(solved) + shift))
    return {solver: sorted(values) for solver, values in found.items()}, len(times)


def curve(values, count, top):
    """Corner points (factor, share) of the step function."""
    points = [(1.0, 0.0)]
    for k, factor in enumerate(values, start=1):
        points += [(factor, points[-1][1]), (factor, k / count)]
    return points + [(top, points[-1][1])]


def svg(times, solvers, shift, title):
    found, count = factors(times, solvers, shift)
    largest = max((values[-1] for values in found.values() if values), default=1.0)
    top = 2.0 ** max(1, math.ceil(math.log2(largest)))

    def place(factor, share):
        x = MARGIN + (WIDTH - 2 * MARGIN) * math.log2(factor) / math.log2(top)
        return x, HEIGHT - MARGIN - (HEIGHT - 2 * MARGIN) * share

    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{HEIGHT}" font-family="sans-serif" '
             f'font-size="12">', f'<rect width="{WIDTH}" height="{HEIGHT}" fill="white"/>',
             f'<text x="{WIDTH / 2}" y="24" text-anchor="middle" font-size="14">{escape(title)}</text>']
    lines += grid(place, top)
    for k, solver in enumerate(solvers):
        colour = COLOURS[k % len(COLOURS)]
        corners = [place(*point) for point in curve(found[solver], max(1, count), top)]
        path = " ".join(f"{x:.1f},{y:.1f}" for x, y in corners)
        lines.append(f'<polyline fill="none" stroke="{colour}" stroke-width="2" points="{path}"/>')
        y = HEIGHT - MARGIN - 14 * (len(solvers) - k)
        lines.append(f'<text x="{WIDTH - MARGIN - 6}" y="{y}" text-anchor="end" fill="{colour}">{escape(solver)}</text>')
    return "\n".join(lines + ["</svg>", ""])


def grid(place, top):
    lines = []
    for share in (0.0, 0.25, 0.5, 0.75, 1.0):
        (x1, y), (x2, _) = place(1.0, share), place(top, share)
        lines.append(f'<line x1="{x1}" y1="{y}" x2="{x2}" y2="{y}" stroke="#dddddd"/>')
        lines.append(f'<text x="{x1 - 6}" y="{y + 4}" text-anchor="end">{share:.0%}</text>')
    steps = int(round(math.log2(top)))
    for power in range(0, steps + 1, max(1, steps // 8)):
        (x, y1), (_, y2) = place(2.0**power, 0.0), place(2.0**power, 1.0)
        lines.append(f'<line x1="{x}" y1="{y1}" x2="{x}" y2="{y2}" stroke="#dddddd"/>')
        lines.append(f'<text x="{x}" y="{y1 + 16}" text-anchor="middle">{2**power}</text>')
    lines.append(f'<text x="{WIDTH / 2}" y="{HEIGHT - 16}" text-anchor="middle">time over the fastest, factor</text>')
    return lines
