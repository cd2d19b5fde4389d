"""Work tables: typed rows that wait on disk for a while.

    import datetime
    import zvwt

    with zvwt.Manager("/data/tables") as manager:
        with manager.create([("id", int), ("city", str), ("founded", datetime.date)]) as table:
            table.append((1, "Lisbon", None))
            table.extend([(2, "Oslo", datetime.date(1048, 1, 1)), (3, "Rome", None)])
        with manager.open(table.name) as rows:
            for number, city, founded in rows:
                print(number, city, founded)
        manager.delete(table.name)

Columns have one of five types; None is a null in each of them:

    bool
    int                 64 bits, signed
    decimal.Decimal     up to 38 significant digits; float is stored as such a decimal, too
    str                 without zero characters
    datetime.datetime   without a time zone, cut to milliseconds; datetime.date is another name

Nothing that is appended changes silently but for the milliseconds: a value that its column cannot
hold is refused, and the rows before it stay. Values stay equal; 0 has no sign, and Decimal("1.10")
is read as 1.1. Kin types are taken: an int for a Decimal or float and, where it is 0 or 1, for a
bool, a bool for a number, and a date for a datetime. Bytes in a text that are no UTF-8 are read as
lone surrogates, and written back as they were (the error handler "surrogateescape").

Errors: what the library refuses is raised as Error, with its text. A row of another length than
the columns, a text with a zero character or a surrogate that stands for no byte, an int of
thousands of digits and a date with a time zone are a ValueError. A value of another type is a
TypeError, and so is such an argument. Both name the column and the value.
Appending to a finished table, copying, sorting, checking and cleaning up are left to the library's
C++ classes and to its tool, zvwt.
Thread rule: a manager may be used by several threads at once. So may a reader or a writer, but its
threads take turns and get rows in no order: each thread should have a reader of its own.

The library itself, libzvwt.so.1 or zvwt.dll, is looked for where the environment variable
ZVWT_LIBRARY points, else beside this file, else where the system keeps its libraries.
"""

from __future__ import annotations

import ctypes
import ctypes.util
import datetime
import itertools
import os
import reprlib
import threading
from array import array
from collections.abc import Callable, Iterable, Iterator, Sequence
from ctypes import CFUNCTYPE, POINTER, c_char_p, c_int, c_int64, c_size_t, c_void_p
from decimal import Decimal
from operator import add, index
from typing import Any, NamedTuple, Optional, Union

__all__ = ["Column", "Error", "Manager", "Reader", "Writer"]


class Error(Exception):
    """What the library says about an operation that has failed."""


class Column(NamedTuple):
    """A column of a table: its name and the Python type of its values."""

    name: str
    type: type


# ---- The library


def _load_library() -> ctypes.CDLL:
    path = os.environ.get("ZVWT_LIBRARY")
    if path:
        path = os.path.abspath(path)
    else:
        file = "zvwt.dll" if os.name == "nt" else "libzvwt.so.1"
        path = os.path.join(os.path.dirname(os.path.abspath(__file__)), file)
        if not os.path.exists(path):
            path = os.name == "nt" and ctypes.util.find_library("zvwt") or file
    try:
        return ctypes.CDLL(path)
    except OSError as error:
        raise ImportError(
            f"the library of work tables cannot be loaded ({error}); "
            "the environment variable ZVWT_LIBRARY can say where it is"
        ) from None


class _Functions(ctypes.Structure):
    """ZvwfFunctions of zvwf.h, with a handle for the cursor."""

    _fields_ = [
        ("add_column", CFUNCTYPE(c_int, c_void_p, c_char_p)),
        ("create", CFUNCTYPE(c_int, c_void_p)),
        ("end_append", CFUNCTYPE(c_int, c_void_p)),
        ("append_row", CFUNCTYPE(c_int, c_void_p)),
        ("column_name", CFUNCTYPE(c_int, c_void_p, c_int, POINTER(c_char_p))),
        ("error_message", CFUNCTYPE(c_char_p, c_void_p)),
        ("column_count", CFUNCTYPE(c_int, c_void_p)),
        ("row_count", CFUNCTYPE(c_int, c_void_p)),
        ("value", CFUNCTYPE(c_int, c_void_p, c_int, POINTER(c_char_p))),
        ("new_row", CFUNCTYPE(c_int, c_void_p)),
        ("next", CFUNCTYPE(c_int, c_void_p)),
        ("release", CFUNCTYPE(None, c_void_p)),
        ("set_value", CFUNCTYPE(c_int, c_void_p, c_int, c_char_p)),
        ("rewind", CFUNCTYPE(c_int, c_void_p)),
    ]


def _declare(name: str, result: Any, *arguments: Any) -> Any:
    function = getattr(_library, name)
    function.restype = result
    function.argtypes = arguments
    return function


_library = _load_library()
_new_manager = _declare("zvwtNewManager", c_void_p, c_char_p, c_char_p, c_char_p, c_size_t)
_release_manager = _declare("zvwtReleaseManager", None, c_void_p)
_delete_table = _declare("zvwtDeleteTable", c_int, c_void_p, c_char_p, c_char_p, c_size_t)
_new_cursor = _declare("zvwtNewCursor", c_void_p, c_void_p)
_add_column = _declare("zvwtAddColumn", None, c_void_p, c_char_p, c_int)
_open_table = _declare("zvwtOpenTable", c_int, c_void_p, c_char_p, c_int)
_keep_table = _declare("zvwtKeepTable", None, c_void_p)
_table_name = _declare("zvwtTableName", c_char_p, c_void_p)
_column_type = _declare("zvwtColumnType", c_int, c_void_p, c_int)
_row_count = _declare("zvwtRowCount", c_int64, c_void_p)
_read_rows = _declare("zvwtReadRows", c_int, c_void_p, c_int, c_void_p)
_append_rows = _declare("zvwtAppendRows", c_int, c_void_p, c_int, c_void_p)

# What travels at once: values, and when they are appended characters. The library reads no more.
_BATCH_VALUES = 4096
_BATCH_CHARACTERS = 1 << 20
_ERROR_SIZE = 1024


_shortened = reprlib.Repr()
_shortened.maxstring = _shortened.maxlong = _shortened.maxother = 80


def _shown(value: Any) -> str:
    """So much of a value as belongs into a message."""
    try:
        return _shortened.repr(value)
    except ValueError:  # an int of more digits than Python prints
        return "a number of too many digits"


def _is_no(value: Any, what: str) -> TypeError:
    return TypeError(f"{_shown(value)} is no {what}")


def _said_of(what: str, error: Exception) -> Exception:
    kind = TypeError if isinstance(error, TypeError) else ValueError
    return kind(f"{what}: {error}")


def _encode(text: str) -> bytes:
    if not isinstance(text, str):
        raise _is_no(text, "str")
    try:
        encoded = str.encode(text, "utf-8", "surrogateescape")
    except UnicodeEncodeError:
        raise ValueError(f"{_shown(text)} has a surrogate that stands for no byte") from None
    if b"\0" in encoded:
        raise ValueError(f"{_shown(text)} has a zero character, which would end it")
    return encoded


def _encode_name(what: str, name: str) -> bytes:
    try:
        return _encode(name)
    except (TypeError, ValueError) as error:
        raise _said_of(what, error) from None


def _iterate(things: Iterable[Any], what: str) -> Iterator[Any]:
    try:
        return iter(things)
    except TypeError:
        raise _is_no(things, what) from None


def _decode(text: bytes) -> str:
    return text.decode("utf-8", "surrogateescape")


# ---- Values as texts

_BOOLEAN, _INTEGER, _REAL, _STRING, _DATE = range(1, 6)

_TYPE_NUMBERS = {
    bool: _BOOLEAN,
    int: _INTEGER,
    float: _REAL,
    Decimal: _REAL,
    str: _STRING,
    datetime.datetime: _DATE,
    datetime.date: _DATE,
}
_TYPES = {
    _BOOLEAN: bool,
    _INTEGER: int,
    _REAL: Decimal,
    _STRING: str,
    _DATE: datetime.datetime,
}
_BOOLEANS = {b"false": False, b"true": True, None: None}
_BOOLEAN_TEXTS = {False: b"false", True: b"true", None: None}

# The values of one column in a batch, of which there is at least one, with None for nulls. They
# are converted by few calls into C for all of them. Where that fails, mostly because of a null, it
# is done again value by value.
_Values = Sequence[Any]
_Texts = list[Optional[bytes]]


def _each(convert: Callable[[Any], Any], values: _Values) -> list[Any]:
    return [None if value is None else convert(value) for value in values]


def _convert(convert: Callable[[Any], Any], values: _Values) -> list[Any]:
    try:
        return list(map(convert, values))
    except TypeError:
        return _each(convert, values)


def _strings(texts: _Texts) -> list[Optional[str]]:
    try:
        return list(map(bytes.decode, texts))
    except (TypeError, UnicodeDecodeError):
        return _each(_decode, texts)


_VALUES_OF: dict[type, Callable[[_Texts], list[Any]]] = {
    bool: lambda texts: [_BOOLEANS[text] for text in texts],
    int: lambda texts: _convert(int, texts),
    float: lambda texts: _convert(float, texts),
    Decimal: lambda texts: _convert(Decimal, _strings(texts)),
    str: _strings,
    datetime.datetime: lambda texts: _convert(datetime.datetime.fromisoformat, _strings(texts)),
}


def _encode_all(strings: Iterable[str]) -> _Texts:
    return "\0".join(strings).encode("utf-8", "surrogateescape").split(b"\0")


def _boolean_text(value: Any) -> bytes:
    if isinstance(value, int) and value in (0, 1):
        return _BOOLEAN_TEXTS[value]
    raise _is_no(value, "bool")


def _boolean_texts(values: _Values) -> _Texts:
    if {bool, type(None)}.issuperset(map(type, values)):
        return [_BOOLEAN_TEXTS[value] for value in values]
    return _each(_boolean_text, values)


def _digits(value: Any, what: str) -> bytes:
    try:
        return b"%d" % index(value)
    except TypeError:
        raise _is_no(value, what) from None
    except ValueError:
        raise ValueError(f"{_shown(value)} is too large") from None


def _integer_texts(values: _Values) -> _Texts:
    try:
        return list(map(b"%d".__mod__, map(index, values)))
    except (TypeError, ValueError):
        return _each(lambda value: _digits(value, "int"), values)


def _real_text(value: Any) -> bytes:
    if isinstance(value, (Decimal, float)):
        return str(value).encode()
    return _digits(value, "Decimal, float or int")


def _real_texts(values: _Values) -> _Texts:
    try:
        if {Decimal, float, int}.issuperset(map(type, values)):
            return _encode_all(map(str, values))
    except ValueError:  # an int of more digits than Python prints
        pass
    return _each(_real_text, values)


def _string_texts(values: _Values) -> _Texts:
    try:
        texts = _encode_all(values)
    except (TypeError, UnicodeEncodeError):
        return _each(_encode, values)
    return texts if len(texts) == len(values) else _each(_encode, values)


def _date_text(value: Any) -> bytes:
    if not isinstance(value, datetime.date):
        raise _is_no(value, "date")
    if getattr(value, "tzinfo", None) is not None:
        raise ValueError(f"{_shown(value)} has a time zone, which a table cannot keep")
    if isinstance(value, datetime.datetime):
        return value.isoformat(timespec="milliseconds").encode()
    return value.isoformat().encode()


_TEXTS_OF: dict[int, Callable[[_Values], _Texts]] = {
    _BOOLEAN: _boolean_texts,
    _INTEGER: _integer_texts,
    _REAL: _real_texts,
    _STRING: _string_texts,
    _DATE: lambda values: _each(_date_text, values),
}


class _TextArray:
    """Texts as the library takes them, at an address that is valid as long as this object."""

    def __init__(self, texts: _Texts) -> None:
        held = [b"" if text is None else text for text in texts]
        self._data = b"\0".join(held)  # and a zero behind the last one
        start = ctypes.cast(self._data, c_void_p).value
        offsets = itertools.accumulate(map(len, held), initial=0)
        self._pointers = array("Q", map(add, offsets, itertools.count(start)))
        if None in texts:
            for i, text in enumerate(texts):
                if text is None:
                    self._pointers[i] = 0
        self.address = self._pointers.buffer_info()[0]


# ---- Managers and cursors


class _Cursor:
    """A cursor of the library, released once: by its reader or writer, or by the manager."""

    def __init__(self, manager: Manager) -> None:
        self._lock = threading.Lock()  # one thread at a time uses a cursor
        self._manager = manager
        self._handle: Optional[int] = None
        manager._add_cursor(self)

    def attach(self, handle: int) -> None:
        """Takes the library's cursor, before any other thread knows this one."""
        self._functions = _Functions.from_address(c_void_p.from_address(handle).value)
        self._handle = handle

    def __enter__(self) -> tuple[int, _Functions]:
        self._lock.acquire()
        if self._handle is None:
            self._lock.release()
            raise Error("The table is closed.")
        return self._handle, self._functions

    def __exit__(self, *_: object) -> None:
        self._lock.release()

    def failure(self) -> Error:
        """The reason of the last failure; with the lock held."""
        return Error(_decode(self._functions.error_message(self._handle)))

    def name(self) -> str:
        """The table's name; with the lock held."""
        return _decode(_table_name(self._handle))

    def release(self) -> None:
        with self._lock:
            handle, self._handle = self._handle, None
            if handle is not None:
                self._functions.release(handle)
        self._manager._drop_cursor(self)


class _Single:
    """What a copy would release twice."""

    def __reduce_ex__(self, _: object) -> Any:
        raise TypeError(f"a {type(self).__name__} can be neither copied nor pickled")


class Manager(_Single):
    """The tables in some directories.

    `directories` is one directory or a list of them; none stands for the library's option BASE/TEMP
    (the environment variable ZVB_BASE_TEMP), else for the system's temporary directory. They are
    first looked at when a table is made or opened. `name` is one by which the library's copyTable
    finds this manager; files do not have it.

    Closing the manager, which the end of a `with` statement does, closes its readers, and its
    writers with the loss of their tables. Finished tables stay on disk until they are deleted.
    """

    _handle: Optional[int] = None

    def __init__(
        self,
        directories: Union[str, os.PathLike[str], Iterable[Union[str, os.PathLike[str]]]] = (),
        *,
        name: str = "python",
    ) -> None:
        self._lock = threading.Lock()
        self._cursors: set[_Cursor] = set()
        reason = ctypes.create_string_buffer(_ERROR_SIZE)
        named = _encode_name("the manager's name", name)
        listed = _encode(_directory_list(directories))
        self._handle = _new_manager(named, listed, reason, _ERROR_SIZE)
        if self._handle is None:
            raise Error(_decode(reason.value))

    def create(self, columns: Iterable[tuple[str, type]]) -> Writer:
        """Creates a table of columns with these names and types. See Writer."""
        return Writer(self, columns)

    def open(self, name_or_uri: str, backwards: bool = False, *, reals: type = Decimal) -> Reader:
        """Opens a table, or the rows and columns of it that a URI lists, for reading. See Reader.

        Backwards, the last row comes first. `reals` is the type in which decimals are given: with
        float they are read faster, and rounded; beyond its range they are infinite.
        """
        return Reader(self, name_or_uri, backwards, reals)

    def delete(self, name: str) -> None:
        """Removes a table's files."""
        encoded = _encode_name("the table", name)
        reason = ctypes.create_string_buffer(_ERROR_SIZE)
        with self._lock:
            if _delete_table(self._opened(), encoded, reason, _ERROR_SIZE) != 0:
                raise Error(_decode(reason.value))

    def close(self) -> None:
        """Closes the manager and what it has opened. Closing again does nothing."""
        with self._lock:
            handle, self._handle = self._handle, None
        for cursor in list(self._cursors):
            cursor.release()
        if handle is not None:
            _release_manager(handle)

    def __enter__(self) -> Manager:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def __del__(self) -> None:
        if self._handle is not None:
            self.close()

    def _opened(self) -> int:
        if self._handle is None:
            raise Error("The manager is closed.")
        return self._handle

    def _add_cursor(self, cursor: _Cursor) -> None:
        with self._lock:
            handle = _new_cursor(self._opened())
            if handle is None:
                raise MemoryError
            cursor.attach(handle)
            self._cursors.add(cursor)

    def _drop_cursor(self, cursor: _Cursor) -> None:
        self._cursors.discard(cursor)


def _directory_list(
    directories: Union[str, os.PathLike[str], Iterable[Union[str, os.PathLike[str]]]]
) -> str:
    if isinstance(directories, (str, bytes, os.PathLike)):
        directories = [directories]
    listed = _iterate(directories, "directory and no list of directories")
    return os.pathsep.join(map(_directory, listed))


def _directory(path: Union[str, os.PathLike[str]]) -> str:
    text = os.fspath(path) if isinstance(path, os.PathLike) else path
    if not isinstance(text, str):
        raise TypeError(f"a directory is a str or a path, and {_shown(path)} is not")
    if text == "" or os.pathsep in text:
        raise ValueError(f"a directory cannot be named {_shown(text)}")
    return text


class Reader(_Single):
    """The rows of a table: what `for row in reader` gives, tuples with one value for each column.

    A loop that is left early is continued by the next one, and so is one that an exception has
    ended: a row that cannot be read costs only itself, and an interrupt no row. rewind() starts
    again.

    `name` is the table's name, and `columns` a tuple of a Column for each of what is read. A reader
    keeps its manager alive.
    """

    _cursor: Optional[_Cursor] = None

    def __init__(self, manager: Manager, name_or_uri: str, backwards: bool, reals: type) -> None:
        if reals not in (Decimal, float):
            raise TypeError("reals are given as decimal.Decimal or float")
        self._manager = manager
        self._what = (_encode_name("the table", name_or_uri), 1 if backwards else 0)
        # Rows to be given, and behind them the count of those whose texts have been read already.
        self._batch: tuple[Iterator[tuple[Any, ...]], list[int]] = (iter(()), [])
        self._cursor = _Cursor(manager)
        with self._cursor as (handle, functions):
            self._open(handle)
            self.name = self._cursor.name()
            self.columns = self._columns_of(handle, functions, reals)
        self._conversions = [_VALUES_OF[column.type] for column in self.columns]
        self._batch_rows = max(1, _BATCH_VALUES // max(1, len(self.columns)))
        self._texts = (c_char_p * (self._batch_rows * len(self.columns)))()

    @property
    def row_count(self) -> int:
        """The number of all rows of the table, whatever is being read."""
        with self._cursor as (handle, _):
            return _row_count(handle)

    def __iter__(self) -> Iterator[tuple[Any, ...]]:
        while True:
            rows, _ = self._batch
            yield from rows
            if not self._read_behind(rows):
                return

    def rewind(self) -> None:
        """Starts again: the next row is the one that came first. After an Error it is the one that
        would have come next, as long as it can be read."""
        with self._cursor as (handle, _):
            self._open(handle)
            self._forget_rows()

    def close(self) -> None:
        """Closes the table. Closing again does nothing."""
        if self._cursor is not None:
            self._cursor.release()
            self._forget_rows()

    def __enter__(self) -> Reader:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def __del__(self) -> None:
        self.close()

    def _open(self, handle: int) -> None:
        if _open_table(handle, *self._what) != 0:
            raise self._cursor.failure()

    def _columns_of(
        self, handle: int, functions: _Functions, reals: type
    ) -> tuple[Column, ...]:
        columns = []
        name = c_char_p()
        for i in range(functions.column_count(handle)):
            functions.column_name(handle, i, ctypes.byref(name))
            column = _decode(name.value)
            number = _column_type(handle, i)
            if number == 0:
                raise self._cursor.failure()
            columns.append(Column(column, reals if number == _REAL else _TYPES[number]))
        return tuple(columns)

    def _forget_rows(self) -> None:
        rows, read = self._batch
        for _ in rows:  # which a loop may be at
            pass
        read.clear()

    def _read_behind(self, rows: Iterator[tuple[Any, ...]]) -> bool:
        """Reads the next batch, unless somebody else has; False at the end."""
        with self._cursor as (handle, _):
            current, read = self._batch
            if current is not rows:
                return True
            if not read:
                # One call reads and notes it: an interrupt comes before both or after both. Where
                # it keeps the rows from being made of the texts, the next call makes them.
                read.extend(map(_read_rows, [handle], [self._batch_rows], [self._texts]))
            count = read[0]
            if count > 0:
                self._batch = (self._rows_of(count), [])
                return True
            read.clear()
            if count < 0:
                raise self._cursor.failure()
            return False

    def _rows_of(self, count: int) -> Iterator[tuple[Any, ...]]:
        columns = len(self.columns)
        if columns == 0:
            return itertools.repeat((), count)
        texts = self._texts[: count * columns]
        return zip(*[convert(texts[i::columns]) for i, convert in enumerate(self._conversions)])


def _column(pair: tuple[str, type]) -> Column:
    if not isinstance(pair, (tuple, list)) or len(pair) != 2:
        raise TypeError(f"a column is a pair of a name and a type, and {_shown(pair)} is not")
    column = Column(*pair)
    if not isinstance(column.type, type) or column.type not in _TYPE_NUMBERS:
        raise TypeError(f"a column cannot be of the type {_shown(column.type)}")
    return column


def _row(values: Iterable[Any]) -> tuple[Any, ...]:
    return tuple(_iterate(values, "row of values"))


class Writer(_Single):
    """A table that is being written.

        with manager.create([("id", int), ("city", str)]) as table:
            table.append((1, "Lisbon"))
        manager.open(table.name)

    close(), which the end of a `with` statement calls, finishes the table: it can then be opened.
    discard() gives it up, which an exception that leaves the `with` statement does, too. So does
    dropping the writer before it was closed.

    `name` is the table's name, by which it is opened and deleted, and `columns` a tuple of a Column
    for each of its columns. A writer keeps its manager alive.
    """

    _cursor: Optional[_Cursor] = None

    def __init__(self, manager: Manager, columns: Iterable[tuple[str, type]]) -> None:
        self._manager = manager
        self.columns = tuple(map(_column, _iterate(columns, "list of columns")))
        numbers = [_TYPE_NUMBERS[column.type] for column in self.columns]
        names = [_encode_name("the name of a column", column.name) for column in self.columns]
        self._conversions = [_TEXTS_OF[number] for number in numbers]
        self._has_texts = _STRING in numbers
        self._batch_rows = max(1, _BATCH_VALUES // max(1, len(numbers)))
        self._cursor = _Cursor(manager)
        with self._cursor as (handle, functions):
            for name, number in zip(names, numbers):
                _add_column(handle, name, number)
            if functions.create(handle) != 0:
                raise self._cursor.failure()
            self.name = self._cursor.name()
        self._is_open = True

    @property
    def row_count(self) -> int:
        """The number of rows so far."""
        with self._cursor as (handle, _):
            return _row_count(handle)

    def append(self, row: Iterable[Any]) -> None:
        """Adds a row: one value for each column."""
        self._append([_row(row)])

    def extend(self, rows: Iterable[Iterable[Any]]) -> None:
        """Adds rows, many at once. When one cannot be added, those before it are in the table:
        row_count tells how many were taken."""
        batch: list[tuple[Any, ...]] = []
        room = _BATCH_CHARACTERS
        try:
            for row in _iterate(rows, "collection of rows"):
                row = row if type(row) is tuple else _row(row)
                batch.append(row)
                if self._has_texts:
                    for value in row:
                        if isinstance(value, str):
                            room -= len(value)
                if len(batch) == self._batch_rows or room < 0:
                    full, batch, room = batch, [], _BATCH_CHARACTERS
                    self._append(full)
        finally:
            if batch:
                self._append(batch)

    def close(self) -> None:
        """Finishes the table, which is lost when that fails. Closing again does nothing."""
        if not self._is_open:
            return
        self._is_open = False
        try:
            with self._cursor as (handle, functions):
                if functions.end_append(handle) != 0:
                    raise self._cursor.failure()
                _keep_table(handle)
        finally:
            self._cursor.release()

    def discard(self) -> None:
        """Removes the table, unless it is finished."""
        self._is_open = False
        if self._cursor is not None:
            self._cursor.release()

    def __enter__(self) -> Writer:
        return self

    def __exit__(self, exception: object, *_: object) -> None:
        if exception is None:
            self.close()
        else:
            self.discard()

    def __del__(self) -> None:
        self.discard()

    def _append(self, rows: list[tuple[Any, ...]]) -> None:
        try:
            texts = self._texts_of(rows)
        except (TypeError, ValueError):
            if len(rows) == 1:
                raise
            for row in rows:  # up to the one that is wrong
                self._append([row])
            return
        if len(rows) == 1:
            self._write(1, (c_char_p * len(texts))(*texts))
        else:
            held = _TextArray(texts)
            self._write(len(rows), held.address)

    def _write(self, rows: int, texts: Any) -> None:
        with self._cursor as (handle, _):
            if _append_rows(handle, rows, texts) != rows:
                raise self._cursor.failure()

    def _texts_of(self, rows: list[tuple[Any, ...]]) -> _Texts:
        count = len(self.columns)
        for row in rows:
            if len(row) != count:
                raise ValueError(f"a row of {len(row)} values for {count} columns")
        columns = map(self._column_texts, range(count), zip(*rows))
        return list(itertools.chain.from_iterable(zip(*columns)))

    def _column_texts(self, place: int, values: _Values) -> _Texts:
        try:
            return self._conversions[place](values)
        except (TypeError, ValueError) as error:
            raise _said_of(f'column "{self.columns[place].name}"', error) from None
