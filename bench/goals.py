"""What the library wants to reach: each goal is a ratio of two times of one round, and its bound."""

import re
import statistics
from dataclasses import dataclass


@dataclass(frozen=True)
class Goal:
    """The quotient of two expressions over names of benchmarks, at most or at least a bound.

    An expression is arithmetic over names in braces: "5.68 * {floor/wide}". A name may begin with the build that it is
    measured in and "!", and end with ":" and the name of a counter.
    """

    number: str
    what: str
    above: str
    below: str
    bound: float
    at_most: bool = True

    def names(self):
        return re.findall(r"{([^}]*)}", self.above + self.below)

    def programs(self):
        return {name.split("!")[0] if "!" in name else "" for name in self.names()}

    def measure(self, times):
        return evaluate(self.above, times) / evaluate(self.below, times)

    def is_met(self, value):
        return value <= self.bound if self.at_most else value >= self.bound

    def bound_text(self):
        return f"{'<=' if self.at_most else '>='} {self.bound:g}"


@dataclass(frozen=True)
class Growth:
    """How the cost of one unit grows: a cost as an expression for each of some sizes."""

    what: str
    unit: str
    sizes: tuple
    cost: str  # SIZE in it stands for a size

    number = "growth"

    def expressions(self):
        return [self.cost.replace("SIZE", str(size)) for size in self.sizes]

    def names(self):
        return re.findall(r"{([^}]*)}", "".join(self.expressions()))

    def programs(self):
        return {""}

    def medians(self, rounds):
        return [statistics.median(evaluate(expression, times) for times in rounds) for expression in self.expressions()]


def evaluate(expression, times):
    """The value of an expression; it is ours, so eval does no harm."""
    return eval(re.sub(r"{([^}]*)}", lambda name: repr(times[name.group(1)]), expression))  # pylint: disable=eval-used


def benchmark_of(name):
    """The program and the benchmark that a name in an expression speaks of."""
    program, _, rest = name.rpartition("!")
    return program, rest.split(":")[0]


def themes(wanted):
    """What is measured next to each other: benchmarks on the same file."""
    found = []
    for goal in wanted:
        for name in goal.names():
            theme = theme_of(benchmark_of(name)[1])
            if theme not in found:
                found.append(theme)
    return found


def theme_of(benchmark):
    return benchmark.split("/")[1]


def benchmarks(wanted, theme, program):
    """The benchmarks of a theme that a program has to run."""
    found = []
    for goal in wanted:
        for name in goal.names():
            owner, benchmark = benchmark_of(name)
            if owner == program and theme_of(benchmark) == theme and benchmark not in found:
                found.append(benchmark)
    return found


LINES = ("small", "middle", "large")
COLUMNS = (5, 50, 500)
TABLES = (10, 1000, 100000)
KEYS = (8, 32, 128)

GROWTH = [
    Growth("iteration, 200 000, 2 and 20 million lines", "ns a line", LINES,
           "{iterate/count-SIZE/library} / {iterate/count-SIZE/library:lines}"),
    Growth("index, 200 000, 2 and 20 million lines", "ns a line", LINES,
           "{index/count-SIZE/library} / {index/count-SIZE/library:lines}"),
    Growth("line by key, 200 000, 2 and 20 million lines", "ns", LINES, "{lookup/count-SIZE/library}"),
    Growth("iteration, 5, 50 and 500 columns", "ns a field", COLUMNS,
           "{iterate/grow-columns-SIZE/library} / {iterate/grow-columns-SIZE/library:fields}"),
    Growth("directory of 200 000 lines, 10, 1000 and 100 000 tables", "ns a line", TABLES,
           "{directory/grow-tables-SIZE/library} / {directory/grow-tables-SIZE/library:lines}"),
    Growth("table by name, 10, 1000 and 100 000 tables", "ns", TABLES, "{tables/grow-tables-SIZE/library}"),
    Growth("index, keys of 8, 32 and 128 bytes, lines of 160", "ns a line", KEYS,
           "{index/grow-key-SIZE/library} / {index/grow-key-SIZE/library:lines}"),
    Growth("line by key, keys of 8, 32 and 128 bytes", "ns", KEYS, "{lookup/grow-key-SIZE/library}"),
]

# A peer that no package brings was measured once, on another machine, against the same floor: megabytes per second of the
# floor and of the peer, on files made alike.
FASTEST = {"wide": 7055 / 1242, "narrow": 7180 / 1111}  # finds fields; leaves quotes in them
UNQUOTING = {"wide": 7055 / 967, "narrow": 7180 / 888}  # finds fields and takes quotes away


def iteration(limit, file):
    return Goal("2", f"{file}: iteration with all field starts / floor", f"{{iterate/{file}/library}}", f"{{floor/{file}}}",
                limit)


ALL = [
    Goal("1", "multi: table directory / floor", "{directory/multi/library}", "{floor/multi}", 1.6),
    Goal("1", "multi: pass of the fastest peer (from its ratio) / directory", f"{FASTEST['narrow']} * {{floor/multi}}",
         "{directory/multi/library}", 4, False),
    iteration(3.3, "wide"),
    iteration(4.2, "narrow"),
    iteration(4.2, "multi"),
    iteration(6.5, "wideq"),
    *[Goal("3", f"{file}: fastest peer (from its ratio) / iteration", f"{FASTEST[like]} * {{floor/{file}}}",
           f"{{iterate/{file}/library}}", 1.6, False) for file, like in (("wide", "wide"), ("narrow", "narrow"),
                                                                         ("multi", "narrow"))],
    *[Goal("3", f"{file}: fastest peer that unquotes (from its ratio) / iteration",
           f"{UNQUOTING[file]} * {{floor/{file}}}", f"{{iterate/{file}/library}}", 1.9, False)
      for file in ("wide", "narrow")],
    *[Goal("3", f"{file}: libcsv, which unquotes / iteration", f"{{iterate/{file}/libcsv}}",
           f"{{iterate/{file}/library}}", 1.7 if file == "wideq" else 1.9, False) for file in ("wide", "wideq", "narrow")],
    *[Goal("3", f"{file}: SQLite's CSV table / iteration", f"{{iterate/{file}/sqlite}}", f"{{iterate/{file}/library}}",
           1.9, False) for file in ("wide", "narrow")],
    *[Goal("4", f"{file}: fastest peer (from its ratio) / a getter for each field", f"{FASTEST[file]} * {{floor/{file}}}",
           f"{{getters/{file}/library}}", 1, False) for file in ("wide", "narrow")],
    *[Goal("5", f"{file}: fastest peer (from its ratio) and from_chars / numbers",
           f"{FASTEST[file]} * {{floor/{file}}} + {{numbers/{file}/from_chars}}", f"{{numbers/{file}/library}}", 1.3, False)
      for file in ("wide", "narrow")],
    Goal("6", "narrow: index / floor", "{index/narrow/library}", "{floor/narrow}", 20),
    Goal("6", "narrow: libcsv and a hash map / index", "{index/narrow/libcsv}", "{index/narrow/library}", 8, False),
    Goal("6", "narrow: SQLite's table in memory / index", "{index/narrow/sqlite}", "{index/narrow/library}", 8, False),
    Goal("6", "twokey: index / floor", "{index/twokey/library}", "{floor/twokey}", 20),
    Goal("6", "twokey: libcsv and a hash map / index", "{index/twokey/libcsv}", "{index/twokey/library}", 8, False),
    *[Goal("6", f"{shape}: index / that of counting keys", f"{{index/shape-{shape}/library}}",
           "{index/shape-count/library}", 1.5) for shape in ("pair", "random", "prefix", "suffix", "words")],
    Goal("6", "per line: index of 20 million / of 200 000",
         "{index/count-large/library} / {index/count-large/library:lines}",
         "{index/count-small/library} / {index/count-small/library:lines}", 1.5),
    Goal("7", "narrow: bytes of the index per line beyond the key", "{memory/narrow/library:beyondKey}", "1", 40),
    Goal("7", "twokey: bytes of the index per line beyond the key", "{memory/twokey/library:beyondKey}", "1", 40),
    *[Goal("8", f"{file}: line by key / open, pread of 512 bytes, close", f"{{lookup/{file}/library}}",
           f"{{lookup/{file}/floor}}", 1.3) for file in ("narrow", "twokey", "shape-random", "shape-prefix", "shape-words")],
    Goal("9", "narrow: search without index by the first column / floor", "{search/narrow/library}", "{floor/narrow}", 1.7),
    Goal("9", "narrow: number of lines without index / floor", "{count/narrow/library}", "{floor/narrow}", 1.7),
    Goal("9", "keylast: search without index by the last column / floor", "{search/keylast/library}", "{floor/keylast}", 6),
    *[Goal("10", f"{file}: cached iteration / scanning one", f"{{iterate/{file}/cached}}", f"{{iterate/{file}/library}}", 1.2)
      for file in ("narrow", "wide")],
    Goal("11", "file of 1 KB, open to last field / open, read, close", "{open/small/library}", "{open/small/floor}", 1.6),
    *[Goal("11", f"file of 1 KB: {peer} / library", f"{{open/small/{peer}}}", "{open/small/library}", 1, False)
      for peer in ("libcsv", "sqlite", "literal")],
    *[Goal("12", f"{file}: literal iteration / the library's", f"{{iterate/cliff-{file}/literal}}",
           f"{{iterate/cliff-{file}/library}}", 1.7, False)
      for file in ("crlf", "quotes", "empty", "tiny", "long", "separators", "space", "high")],
    *[Goal("13", f"{file}: bytes of memory of a pass, from the environment", f"{{memory/{file}-alone/iterate:peak}}", "1",
           1e6) for file in ("multi", "wide", "cliff-long")],
    *[Goal("13", f"{file}: bytes by which the process grows in a pass", f"{{memory/{file}-alone/iterate:grown}}", "1", 1e6)
      for file in ("multi", "wide", "cliff-long")],
    Goal("13", "multi: speed of the directory at -O2 / at -O3", "{directory/multi/library}", "{O2!directory/multi/library}",
         0.75, False),
    *[Goal("13", f"{file}: speed of iteration at -O2 / at -O3", f"{{iterate/{file}/library}}",
           f"{{O2!iterate/{file}/library}}", 0.75, False) for file in ("wide", "narrow", "multi", "wideq")],
    *[Goal("14", f"{columns} columns: ns of a getter by heading above one by position",
           f"({{field/columns-{columns}/heading}} - {{field/columns-{columns}/position}})", "1", 15) for columns in (5, 500)],
]
