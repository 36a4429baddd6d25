"""Is an outcome right? Compared with the reference answer; the solver's own quality figures against tolerances."""
import math

LP_TOLERANCE = 1e-6  # relative to max(1, |optimum|)
MIP_TOLERANCE = 1e-4 + 1e-6  # the default gap at which a search stops, and the LP tolerance

# Absolute, on the user's model, as the parameters promise. Complementarity is an amount of objective: see below.
QUALITY_TOLERANCE = {"bound": 1e-6, "constraint": 1e-6, "integrality": 1e-5, "dual": 1e-6, "complementarity": 1e-6}

RIGHT, WRONG, INEXACT, UNKNOWN, LIMIT, FAILED = "right", "wrong", "inexact", "unknown", "limit", "failed"
SOLVED = {RIGHT, UNKNOWN}


def rounding(text):
    """Half a unit of the last digit of a published number."""
    mantissa, _, exponent = text.lower().partition("e")
    digits = len(mantissa.partition(".")[2])
    # Published whole numbers are exact.
    return 0.5 * 10.0 ** (int(exponent or 0) - digits) if digits else 0.0


def objective_error(objective, expected, is_mip):
    """Empty when the objective agrees, else by how much it does not."""
    reference = float(expected)
    scale = max(1.0, abs(reference))
    allowed = (MIP_TOLERANCE if is_mip else LP_TOLERANCE) * scale + rounding(expected)
    if objective is None or not abs(objective - reference) <= allowed:
        return f"objective {objective}, expected {expected}"
    return ""


def quality_error(outcome):
    bad = []
    for name, amount in outcome.quality.items():
        # A product of a violation and a price: what it can cost, relative to the objective.
        scale = max(1.0, abs(outcome.objective or 0.0)) if name == "complementarity" else 1.0
        if not amount <= QUALITY_TOLERANCE[name] * scale:
            bad.append(f"{name} violation {amount:.2e}")
    return ", ".join(bad)


def judge(outcome, expected, is_mip):
    """(verdict, reason)."""
    if outcome.status in (LIMIT, FAILED):
        return outcome.status, outcome.note
    if outcome.status == "optimal":
        bad_quality = quality_error(outcome)
        if expected is None:
            return (INEXACT, bad_quality) if bad_quality else (UNKNOWN, "")
        if not is_number(expected):
            return WRONG, f"optimal, expected {expected}"
        error = objective_error(outcome.objective, expected, is_mip)
        if error:
            return WRONG, error
        return (INEXACT, bad_quality) if bad_quality else (RIGHT, "")
    if expected is None:
        return UNKNOWN, outcome.status
    if expected == outcome.status:
        return RIGHT, ""
    if outcome.status == "inf_or_unbd" and expected in ("infeasible", "unbounded"):
        return RIGHT, "infeasible or unbounded, not decided"
    return WRONG, f"{outcome.status}, expected {expected}"


def is_number(text):
    try:
        return math.isfinite(float(text))
    except ValueError:
        return False
