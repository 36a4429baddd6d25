"""Families of generated linear programs that grow: each function takes a target number of nonzeros and a random
generator and returns a Model whose optimum exists. The shapes are the textbook ones of their fields."""
from dataclasses import dataclass, field
from math import hypot, sqrt


@dataclass
class Model:
    rows: list = field(default_factory=list)  # (sense, right-hand side), sense one of "L", "G", "E"
    columns: list = field(default_factory=list)  # (cost, upper bound or None, [(row, value), ...])

    def row(self, sense, rhs):
        self.rows.append((sense, rhs))
        return len(self.rows) - 1

    def column(self, cost, entries, upper=None):
        self.columns.append((cost, upper, entries))

    @property
    def nonzeros(self):
        return sum(len(entries) for _, _, entries in self.columns)

    def write_mps(self, stream):
        # Fields in their old fixed columns: not every reader takes free format for certain.
        stream.write("NAME          GENERATED\nROWS\n N  COST\n")
        stream.writelines(f" {sense}  R{k}\n" for k, (sense, _) in enumerate(self.rows))
        stream.write("COLUMNS\n")
        for k, (cost, _, entries) in enumerate(self.columns):
            stream.write(f"    C{k:<8} COST      {cost:.10g}\n")
            stream.writelines(f"    C{k:<8} R{row:<7}  {value:.10g}\n" for row, value in entries)
        stream.write("RHS\n")
        stream.writelines(f"    RHS       R{k:<7}  {rhs:.10g}\n" for k, (_, rhs) in enumerate(self.rows) if rhs != 0)
        stream.write("BOUNDS\n")
        stream.writelines(f" UP BND       C{k:<7}  {upper:.10g}\n" for k, (_, upper, _) in enumerate(self.columns)
                          if upper is not None)
        stream.write("ENDATA\n")


def transport(nonzeros, random):
    """Points in the plane: as many suppliers as customers, every pair connected."""
    side = max(2, round(sqrt(nonzeros / 2)))
    model = Model()
    demand = [random.randint(10, 50) for _ in range(side)]
    supply = [round(1.1 * sum(demand) / side * random.uniform(0.95, 1.05)) + 1 for _ in range(side)]
    sources = [model.row("L", amount) for amount in supply]
    sinks = [model.row("G", amount) for amount in demand]
    places = [[(random.random(), random.random()) for _ in range(side)] for _ in range(2)]
    for source, (x, y) in zip(sources, places[0]):
        for sink, (u, v) in zip(sinks, places[1]):
            model.column(round(100 * hypot(x - u, y - v), 2), [(source, 1), (sink, 1)])
    return model


def multicommodity(nonzeros, random):
    """Commodities on a grid of streets with joint capacities; a dear direct arc carries what the streets cannot."""
    commodities = max(2, round((nonzeros / 12) ** (1 / 3)))
    side = max(3, round(sqrt(nonzeros / (12 * commodities))))
    model = Model()
    arcs = []
    for x in range(side):
        for y in range(side):
            for u, v in ((x + 1, y), (x, y + 1)):
                if u < side and v < side:
                    arcs += [(x * side + y, u * side + v), (u * side + v, x * side + y)]
    capacity = [model.row("L", random.randint(5, 25)) for _ in arcs]
    length = [random.randint(1, 20) for _ in arcs]
    for _ in range(commodities):
        start, end = random.sample(range(side * side), 2)
        amount = random.randint(5, 20)
        balance = [model.row("E", amount if node == start else -amount if node == end else 0)
                   for node in range(side * side)]
        for (a, b), joint, cost in zip(arcs, capacity, length):
            model.column(cost, [(balance[a], 1), (balance[b], -1), (joint, 1)])
        model.column(1000, [(balance[start], 1), (balance[end], -1)])
    return model


def staircase(nonzeros, random):
    """Production over periods: the same plant every time, joined by stocks; what is not delivered is paid for."""
    products, resources, share = 30, 15, 0.4
    recipe = [[(k, random.uniform(0.5, 3)) for k in range(resources) if random.random() < share]
              for _ in range(products)]
    per_period = sum(len(uses) for uses in recipe) + 5 * products
    model = Model()
    previous = None
    for period in range(max(2, round(nonzeros / per_period))):
        machines = [model.row("L", random.uniform(25, 60) * products * share / 10) for _ in range(resources)]
        stock = [model.row("E", random.uniform(0, 8) * (1 + 0.5 * ((period + k) % 4))) for k in range(products)]
        for k, uses in enumerate(recipe):
            model.column(random.uniform(1, 4), [(stock[k], 1)] + [(machines[i], use) for i, use in uses])
            model.column(random.uniform(40, 60), [(stock[k], 1)])
        if previous is not None:
            for before, now in zip(previous, stock):
                model.column(random.uniform(0.1, 0.5), [(before, -1), (now, 1)], upper=20)
        previous = stock
    return model


def covering(nonzeros, random):
    """Set covering: sets of about six elements with costs that grow slower than their size."""
    columns = max(12, nonzeros // 6)
    elements = max(6, columns // 5)
    model = Model()
    rows = [model.row("G", 1) for _ in range(elements)]
    uncovered = list(rows)
    random.shuffle(uncovered)
    for _ in range(columns):
        size = random.randint(3, 9)
        chosen = set(random.sample(rows, min(size, elements)))
        if uncovered:
            chosen.add(uncovered.pop())
        model.column(round(sqrt(len(chosen)) * random.uniform(5, 15), 2), [(row, 1) for row in sorted(chosen)])
    return model


FAMILIES = {"transport": transport, "multicommodity": multicommodity, "staircase": staircase, "covering": covering}
