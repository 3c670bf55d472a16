"""The exceptions of a search."""

from __future__ import annotations

import errno
from typing import Any, Callable

from kglob import _library


class Error(OSError):
    """A search that failed, or a folder that couldn't be read.

    `filename` is the location: a path or an IRI, the text that isn't a valid IRI, or the scheme that isn't served. It
    is bytes if the pattern is. `strerror` is what the system or the store reported, and `errno` the nearest number.
    """

    identifier: str
    """The error for programs, such as "KORVAN:virtualfilesystem:permissionDenied"."""


class NotFoundError(Error, FileNotFoundError):
    """Something that has to exist doesn't, such as the current folder."""


class PermissionDeniedError(Error, PermissionError):
    """Permission to look up or read a location is denied."""


class InvalidIRIError(Error, ValueError):
    """A pattern or root folder begins like an IRI but isn't a valid one."""


_KINDS: dict[int, tuple[type[Error], int]] = {
    _library.INVALID_IRI: (InvalidIRIError, errno.EINVAL),
    _library.UNSUPPORTED_SCHEME: (Error, errno.EPROTONOSUPPORT),
    _library.NOT_FOUND: (NotFoundError, errno.ENOENT),
    _library.PERMISSION_DENIED: (PermissionDeniedError, errno.EACCES),
}


def make_error(failure: _library.Failure, decode: Callable[[bytes], Any]) -> Error | MemoryError:
    """The exception for a failure; `decode` makes its `filename`."""
    message = failure.message.decode(errors="replace")
    if failure.status == _library.OUT_OF_MEMORY:
        return MemoryError(message)
    kind, number = _KINDS.get(failure.status, (Error, errno.EIO))
    reason = failure.reason.decode(errors="replace") or message
    # Without a location the file name has to be absent, or the text of the exception would show an empty one.
    location = (decode(failure.location),) if failure.location else ()
    error = kind(number, reason, *location)
    error.identifier = failure.identifier.decode()
    return error
