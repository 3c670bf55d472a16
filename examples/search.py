"""search.py FOLDER PATTERN: prints what matches the pattern in the folder, a path or an IRI, one match a line. Folders
that can't be read are reported, and the exit status is then 2."""

import os
import sys

import kglob

failures = []
try:
    for match in kglob.iglob(sys.argv[2], root_dir=sys.argv[1], onerror=failures.append):
        sys.stdout.buffer.write(os.fsencode(match) + b"\n")
except kglob.Error as error:
    failures.append(error)
for failure in failures:
    print(f"{failure.identifier}: {failure}", file=sys.stderr)
sys.exit(2 if failures else 0)
