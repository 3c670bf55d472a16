"""`glob` and `iglob`."""

from __future__ import annotations

import atexit
import ctypes
import os
import threading
import weakref
from typing import Any, AnyStr, Callable, Generator, Iterable, Optional, Union

from kglob import _library
from kglob._errors import Error, make_error

_RootFolder = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]
_Names = Union[str, bytes, Iterable[Union[str, bytes]]]
_OnError = Callable[[Error], object]

# Signal handlers, and so ctrl-c, run when the call for the next block has returned.
_SIGNAL_CHECK_MS = 20


def glob(pattern: AnyStr, *, root_dir: Optional[_RootFolder] = None, include_hidden: bool = False,
         follow_links: bool = True, one_file_system: bool = False, exclude: _Names = (),
         max_depth: Optional[int] = None, reads_in_flight: Optional[int] = None,
         onerror: Optional[_OnError] = None) -> list[AnyStr]:
    """Returns the list of all matches; the parameters and exceptions are those of `iglob`."""
    return list(iglob(pattern, root_dir=root_dir, include_hidden=include_hidden, follow_links=follow_links,
                      one_file_system=one_file_system, exclude=exclude, max_depth=max_depth,
                      reads_in_flight=reads_in_flight, onerror=onerror))


def iglob(pattern: AnyStr, *, root_dir: Optional[_RootFolder] = None, include_hidden: bool = False,
          follow_links: bool = True, one_file_system: bool = False, exclude: _Names = (),
          max_depth: Optional[int] = None, reads_in_flight: Optional[int] = None,
          onerror: Optional[_OnError] = None) -> Generator[AnyStr, None, None]:
    """Returns an iterator over the matches, which gives them as they are found.

    The search starts with the first match that is asked for, and reads ahead by a block of 64 KiB of matches. It ends
    when the iterator is exhausted, closed or dropped, and in any case before the interpreter exits. The iterator is a
    generator: `close` ends the search at once, `contextlib.closing` does so at the end of a `with` block, and only one
    thread at a time may use it. In a forked process start a new search; one from before the fork fails there.

    pattern: a str gives matches that are str, decoded as `os.fsdecode` does; bytes give bytes, as the disk has them. A
        pattern is relative to the root folder, and then so are its matches; or it is absolute, or an IRI.
    root_dir: a path or an IRI; if None or empty, the current folder when the search starts.
    include_hidden: whether wildcards also match names that begin with ".".
    follow_links: whether "**" enters links to folders.
    one_file_system: whether folders on other file systems are listed, but not entered.
    exclude: a name, or names, of entries that are left out with all below them; "*" is any run of characters. Such
        folders are not read. Names in the part of the pattern before its first wildcard are never left out.
    max_depth: how many levels below that part matches may be, at least 1; None for any number.
    reads_in_flight: how many folders or requests may be read at a time, at least 1, where reads wait, as on network
        file systems and in stores; None for 32 on a disk and 16 in a store. With 1 the search runs on one thread. More
        than 64 count as 64. The matches and their order are the same.
    onerror: called with an `Error` for each folder that couldn't be read, or entry that couldn't be looked at; if there
        are none, the matches are complete. An exception that it raises ends the search. Without it they are ignored.

    Raises TypeError for a pattern, name or root folder of another type, and ValueError for a NUL in one and for an
    impossible number. Iterating raises an `Error`, which is an OSError, when the search fails, after the matches found
    before; and MemoryError.
    """
    if not isinstance(pattern, (str, bytes)):
        raise TypeError(f"the pattern must be str or bytes, not {type(pattern).__name__}")
    for name, number in (("max_depth", max_depth), ("reads_in_flight", reads_in_flight)):
        if number is not None and not 0 < number < 2**32:
            raise ValueError(f"{name} must be greater than 0, not {number}")
    decode: Callable[[bytes], Any] = os.fsdecode if isinstance(pattern, str) else bytes
    names = [_text(name) for name in ([exclude] if isinstance(exclude, (str, bytes)) else exclude)]
    options = _library.Options(
        ctypes.sizeof(_library.Options), b"" if root_dir is None else _text(root_dir),
        include_dot_files=bool(include_hidden), dont_follow_links=not follow_links,
        excluded_names=(ctypes.c_char_p * len(names))(*names), excluded_count=len(names),
        one_file_system=bool(one_file_system), max_depth=max_depth or 0, reads_in_flight=reads_in_flight or 0)
    return _matches(_text(pattern), options, onerror, decode)


def _text(path: _RootFolder) -> bytes:
    text = os.fsencode(path)
    if b"\0" in text:
        raise ValueError("embedded null byte")
    return text


def _matches(pattern: bytes, options: _library.Options, onerror: Optional[_OnError],
             decode: Callable[[bytes], Any]) -> Generator[Any, None, None]:
    search = _Search(pattern, options)
    separator = decode(b"\0")
    try:
        while True:
            block, failures, error = search.next_block(onerror is not None, decode)
            for failure in failures:
                onerror(failure)  # type: ignore[misc]
            if error is not None:
                raise error
            if block is None:
                return
            yield from decode(block).split(separator)
    finally:
        search.close()


class _Search:
    """A search that one thread uses, and that another may close when the interpreter exits."""

    def __init__(self, pattern: bytes, options: _library.Options) -> None:
        self._lock = threading.Lock()
        self._handle: Optional[_library.Handle] = _library.open_search(pattern, options)
        _open[id(self)] = self

    def next_block(self, with_failures: bool, decode: Callable[[bytes], Any]) -> tuple[Optional[bytes], list[Any], Any]:
        """The next matches, with NULs between them, or None; the failures since the last call; the error, or None."""
        begin, length = ctypes.c_void_p(), ctypes.c_size_t()
        status = _library.TIMED_OUT
        with self._lock:
            while status == _library.TIMED_OUT and self._handle is not None:
                status = _library.next_block(self._handle, _SIGNAL_CHECK_MS, begin, length)
            if self._handle is None or status == _library.INTERRUPTED:
                raise SystemExit  # closed by `_close_all`; it ends a daemon thread without a word
            failures = []
            while with_failures and (failure := _library.next_failure(self._handle)):
                if failure.contents.status != _library.OK:  # a note
                    failures.append(make_error(failure.contents, decode))
            if status != _library.OK:
                return None, failures, make_error(_library.error(self._handle).contents, decode)
            return ctypes.string_at(begin, length.value - 1) if length else None, failures, None

    def close(self) -> None:
        if self._handle is not None:
            _library.cancel(self._handle)
        with self._lock:
            handle, self._handle = self._handle, None
            if handle is not None:
                handle.close()


_open: weakref.WeakValueDictionary[int, _Search] = weakref.WeakValueDictionary()


def _close_all() -> None:
    for reference in _open.valuerefs():
        if (search := reference()) is not None:
            search.close()


# Daemon threads may still be in a search at exit. A forked process has neither those threads nor the searches.
atexit.register(_close_all)
os.register_at_fork(after_in_child=lambda: _open.clear())
