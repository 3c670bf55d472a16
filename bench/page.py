"""Makes all tables and drawings of docs/performance.md anew, in one run, and puts them there: in at most 20 minutes on an idle machine."""

import argparse
import os
import re
import subprocess
import sys
from pathlib import Path

from line_chart import table

HERE = Path(__file__).resolve().parent
DOCUMENT = HERE.parent / "docs" / "performance.md"
TABLE = re.compile(r"<!-- table: (\S+) -->\n\n(?:\|.*\n)+")


def output_of(script: str, *arguments: str) -> str:
    done = subprocess.run([sys.executable, str(HERE / script), *arguments], stdout=subprocess.PIPE, text=True, check=False)
    print(done.stdout, file=sys.stderr)
    if done.returncode != 0:
        sys.exit(f"bench: {script} failed, so {DOCUMENT} stays as it is")
    return done.stdout


def described_run(rounds: int) -> str:
    done = subprocess.run(["git", "describe", "--always", "--dirty"], cwd=HERE, stdout=subprocess.PIPE, text=True, check=True)
    return table(["commit", "rounds", "processors", "load before"],
                 [[done.stdout.strip(), str(rounds), str(os.cpu_count()), f"{os.getloadavg()[0]:.1f}"]], "run")


def replace_tables(document: str, output: str) -> str:
    """The document with each table replaced by that of the same name in the output. Exits if there is none for one of them."""
    tables = {found[1]: found[0] for found in TABLE.finditer(output)}
    missing = {found[1] for found in TABLE.finditer(document)} - tables.keys()
    if missing:
        sys.exit(f"bench: no table {', '.join(sorted(missing))}")
    return TABLE.sub(lambda found: tables[found[1]], document)


def main() -> int:
    parser = argparse.ArgumentParser(prog="bench --page", description=__doc__)
    parser.add_argument("--programs", required=True, help="folder of kglob and of the benchmark programs")
    parser.add_argument("--rounds", type=int, default=5)
    arguments = parser.parse_args()
    common = ["--programs", arguments.programs, "--rounds", str(arguments.rounds)]
    output = described_run(arguments.rounds)
    output += output_of("compare.py", *common)
    output += output_of("store_compare.py", *common)
    output += output_of("figures.py", *common, "--output", str(DOCUMENT.parent / "figures"))
    DOCUMENT.write_text(replace_tables(DOCUMENT.read_text(), output))
    return 0


if __name__ == "__main__":
    sys.exit(main())
