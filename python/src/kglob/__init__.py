"""File search by wildcard patterns, on local disks and in object stores.

    import kglob

    for path in kglob.iglob("**/*.csv", root_dir="s3://bucket/data"):
        print(path)

`glob` returns a list and `iglob` an iterator, like the functions of the standard library's module `glob`. They differ
from those as follows:

- "*" and "**" are the only wildcards. "?", "[", "]" and every other character match themselves, and there is no way to
  escape a "*".
- "**" is always recursive, so there is no parameter `recursive`. A link that leads back to a folder above it is a
  match, but is not descended into.
- "data/**" matches "data" itself as "data", not as "data/".
- Matches are sorted: the entries of a folder by the bytes of their names, each followed by everything below it.
- A pattern or root folder may be an IRI, such as "s3://bucket/2024/*". It must be a str or bytes, since `pathlib`
  would merge the two slashes.
- A search that fails raises an exception. Folders that can't be read are passed over, and reported to `onerror`.
- There is no `dir_fd`.

Any thread may search. The interpreter runs other threads while a search waits for matches.
"""

from kglob._errors import Error, InvalidIRIError, NotFoundError, PermissionDeniedError
from kglob._search import glob, iglob

__all__ = ["Error", "InvalidIRIError", "NotFoundError", "PermissionDeniedError", "glob", "iglob"]
