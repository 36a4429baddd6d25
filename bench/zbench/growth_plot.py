"""Log-log plots of time over nonzeros, one panel a family."""
import math
from xml.sax.saxutils import escape

from zbench.profile import COLOURS

PANEL_WIDTH, PANEL_HEIGHT, MARGIN = 360, 280, 48


def decades(values):
    return math.floor(math.log10(min(values))), math.ceil(math.log10(max(values)))


def svg(times, solvers):
    """times[family][solver] is a list of (nonzeros, seconds)."""
    points = [point for family in times.values() for row in family.values() for point in row]
    x_range, y_range = decades([x for x, _ in points]), decades([y for _, y in points])
    columns = 2
    height = PANEL_HEIGHT * math.ceil(len(times) / columns)
    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{columns * PANEL_WIDTH}" height="{height}" '
             f'font-family="sans-serif" font-size="11">',
             f'<rect width="{columns * PANEL_WIDTH}" height="{height}" fill="white"/>']
    for k, (family, rows) in enumerate(times.items()):
        left, top = k % columns * PANEL_WIDTH, k // columns * PANEL_HEIGHT
        lines += panel(family, rows, solvers, left, top, x_range, y_range)
    return "\n".join(lines + ["</svg>", ""])


def panel(family, rows, solvers, left, top, x_range, y_range):
    def place(x, y):
        across = (math.log10(x) - x_range[0]) / (x_range[1] - x_range[0])
        up = (math.log10(y) - y_range[0]) / (y_range[1] - y_range[0])
        return (left + MARGIN + (PANEL_WIDTH - 1.5 * MARGIN) * across,
                top + PANEL_HEIGHT - MARGIN - (PANEL_HEIGHT - 2 * MARGIN) * up)

    lines = [f'<text x="{left + PANEL_WIDTH / 2}" y="{top + 24}" text-anchor="middle" font-size="13">'
             f'{escape(family)}: seconds over nonzeros</text>']
    for power in range(x_range[0], x_range[1] + 1):
        (x, y1), (_, y2) = place(10.0**power, 10.0 ** y_range[0]), place(10.0**power, 10.0 ** y_range[1])
        lines.append(f'<line x1="{x:.1f}" y1="{y1:.1f}" x2="{x:.1f}" y2="{y2:.1f}" stroke="#dddddd"/>')
        lines.append(f'<text x="{x:.1f}" y="{y1 + 15:.1f}" text-anchor="middle">1e{power}</text>')
    for power in range(y_range[0], y_range[1] + 1):
        (x1, y), (x2, _) = place(10.0 ** x_range[0], 10.0**power), place(10.0 ** x_range[1], 10.0**power)
        lines.append(f'<line x1="{x1:.1f}" y1="{y:.1f}" x2="{x2:.1f}" y2="{y:.1f}" stroke="#dddddd"/>')
        lines.append(f'<text x="{x1 - 5:.1f}" y="{y + 4:.1f}" text-anchor="end">1e{power}</text>')
    for k, solver in enumerate(solvers):
        corners = [place(*point) for point in rows.get(solver, [])]
        colour = COLOURS[k % len(COLOURS)]
        path = " ".join(f"{x:.1f},{y:.1f}" for x, y in corners)
        lines.append(f'<polyline fill="none" stroke="{colour}" stroke-width="2" points="{path}"/>')
        lines += [f'<circle cx="{x:.1f}" cy="{y:.1f}" r="2.5" fill="{colour}"/>' for x, y in corners]
        x, y = place(10.0 ** x_range[0], 10.0 ** y_range[1])
        lines.append(f'<text x="{x + 8:.1f}" y="{y + 14 * (k + 1):.1f}" fill="{colour}">{escape(solver)}</text>')
    return lines
