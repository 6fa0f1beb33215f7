"""Writes committed files that scripts generate, or prints where they differ."""

import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent


def between(document, name, text):
    """The document with `text` inserted between the marks of `name`."""
    opening, closing = f"<!-- {name}: written by a script -->\n", f"<!-- {name}: end -->\n"
    if document.count(opening) != 1 or document.count(closing) != 1:
        raise SystemExit(f"the marks of {name} are missing")
    head, rest = document.split(opening)
    return head + opening + text + closing + rest.split(closing)[1]


def table(head, rows):
    return "".join("| " + " | ".join(row) + " |\n" for row in [head, ["---"] * len(head), *rows])


def settle(files, folder, pattern, check):
    """Writes `files`, bytes by path, and removes all other files in `folder` that match the pattern; with `check` it
    only reports. Returns the script's exit code."""
    strays = [path for path in sorted(folder.rglob(pattern)) if path not in files]
    differing = [path for path, text in files.items() if not path.is_file() or path.read_bytes() != text]
    if check:
        for path in strays:
            print(f"{path.relative_to(ROOT)}: not described", file=sys.stderr)
        for path in differing:
            print(f"{path.relative_to(ROOT)}: differs from its description", file=sys.stderr)
        return 1 if strays or differing else 0
    for path in strays:
        path.unlink()
    for path in differing:
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(files[path])
    print(f"{len(files)} files, {len(differing)} written, {len(strays)} removed")
    return 0
