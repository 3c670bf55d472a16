"""The functions and structures of kglob.h, which is their manual."""

import ctypes
import os
from typing import Any

OK, TIMED_OUT, FAILED, INVALID_ARGUMENT, INVALID_IRI, UNSUPPORTED_SCHEME, NOT_FOUND = range(7)
PERMISSION_DENIED, INACCESSIBLE, INTERRUPTED, OUT_OF_MEMORY = range(7, 11)


class Options(ctypes.Structure):
    _fields_ = [("size", ctypes.c_size_t), ("root_folder", ctypes.c_char_p), ("cache_bytes", ctypes.c_size_t),
                ("include_dot_files", ctypes.c_uint32), ("dont_follow_links", ctypes.c_uint32),
                ("excluded_names", ctypes.POINTER(ctypes.c_char_p)), ("excluded_count", ctypes.c_size_t),
                ("one_file_system", ctypes.c_uint32), ("report_refusals", ctypes.c_uint32),
                ("max_depth", ctypes.c_uint32), ("facts", ctypes.c_uint32), ("reads_in_flight", ctypes.c_uint32),
                ("reserved", ctypes.c_uint32)]


class Failure(ctypes.Structure):
    _fields_ = [("status", ctypes.c_int), ("identifier", ctypes.c_char_p), ("message", ctypes.c_char_p),
                ("location", ctypes.c_char_p), ("reason", ctypes.c_char_p)]


class Handle(ctypes.c_void_p):
    """A search. The call that starts it makes this object, so that no exception of a signal handler can lose it."""

    def close(self) -> None:
        address, self.value = self.value, None
        if address is not None:
            _close(address)

    __del__ = close


try:
    _library = ctypes.CDLL(os.environ.get("KGLOB_LIBRARY") or "libkglob.so.1")
except OSError as failure:
    raise ImportError(f"the library is neither in the loader's path nor named by KGLOB_LIBRARY: {failure}") from failure


def _function(name: str, result: Any, *arguments: Any, library: ctypes.CDLL = _library) -> Any:
    function = getattr(library, name)
    function.restype = result
    function.argtypes = arguments
    return function


open_search = _function("kglob_open", Handle, ctypes.c_char_p, ctypes.POINTER(Options))
next_block = _function("kglob_next_block", ctypes.c_int, Handle, ctypes.c_int, ctypes.POINTER(ctypes.c_void_p),
                       ctypes.POINTER(ctypes.c_size_t))
error = _function("kglob_error", ctypes.POINTER(Failure), Handle)
next_failure = _function("kglob_next_failure", ctypes.POINTER(Failure), Handle)
# Called with the interpreter's lock held: no other thread can close the handle before the call is over.
cancel = _function("kglob_cancel", None, Handle, library=ctypes.PyDLL(_library._name, handle=_library._handle))
_close = _function("kglob_close", None, ctypes.c_void_p)
