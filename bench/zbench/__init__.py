"""The benchmark runner's parts: instances and references, contestants, verdicts, tables and profiles."""
