"""Instance lists and the answers they are checked against."""
import csv
import pathlib
from dataclasses import dataclass
from typing import Optional


@dataclass(frozen=True)
class Instance:
    path: str  # relative to the models directory
    relax: bool
    kind: str  # the manifest's kind: lp, mip, ...
    expected: Optional[str]  # a number, "infeasible", "unbounded", or None when no answer is known

    @property
    def name(self):
        stem = pathlib.PurePath(self.path).name
        return stem[: stem.index(".mps")] if ".mps" in stem else stem

    @property
    def is_mip(self):
        return self.kind.startswith("mi") and not self.relax


def read_references(models):
    """Kind and expected answer of every solve, and the optimum of every known relaxation."""
    manifest, relaxations = {}, {}
    with open(models / "manifest.tsv", newline="") as stream:
        for row in csv.DictReader(stream, delimiter="\t"):
            expected = None if row["optimum"] == "?" else row["optimum"]
            manifest[row["path"]] = (row["kind"], expected)
    path = models / "relaxations.txt"
    for line in path.read_text().splitlines() if path.exists() else []:
        words = line.split()
        if words and not line.startswith("#"):
            relaxations[words[0]] = None if words[1] == "?" else words[1]
    return manifest, relaxations


def read_set(path, references):
    manifest, relaxations = references
    found = []
    for number, line in enumerate(pathlib.Path(path).read_text().splitlines(), start=1):
        words = line.split("#")[0].split()
        if not words:
            continue
        if len(words) > 2 or (len(words) == 2 and words[1] != "relax"):
            raise SystemExit(f"{path}:{number}: expected 'PATH [relax]'")
        relax = len(words) == 2
        kind, expected = manifest.get(words[0], ("lp", None))
        if relax:
            # A continuous model is its own relaxation.
            expected = relaxations.get(words[0]) if kind.startswith("mi") else expected
        found.append(Instance(words[0], relax, kind, expected))
    return found
