"""The Python module: what it reads and writes beside the tool, what it refuses, and how it ends.

ZVWT_LIBRARY names the library, ZVWT_TOOL the tool, ZVWT_SOURCE the folder of the project.
"""

import collections
import copy
import gc
import itertools
import os
import pathlib
import pickle
import re
import shutil
import subprocess
import sys
import tempfile
import threading
import tracemalloc
import unittest
from datetime import date, datetime, timezone
from decimal import Decimal

import zvwt

LARGE = 2**63 - 1
DIGITS = Decimal("12345678901234567890123456789012345678")
MANY_PLACES = Decimal("-1.2345678901234567890123456789012345678")
TYPES = [int, str, Decimal, datetime, bool]
COLUMNS = list(zip(["n", "t", "r", "d", "b"], TYPES))
ROWS = [
    (1, 'a "q", x', Decimal("0.5"), datetime(2024, 2, 29), True),
    (None, "", DIGITS, None, None),
    (LARGE, "two\nlines €", Decimal("-1E-30"), datetime(1, 1, 1, 13, 45, 10, 250000), False),
    (-LARGE - 1, None, MANY_PLACES, datetime(9999, 12, 31, 23, 59, 59, 999000), None),
    (0, "\t \r", Decimal("1E+99"), datetime(1969, 12, 31, 0, 0, 1), True),
]
CSV = """n,t,r,d,b
1,"a ""q"", x",0.5,2024-02-29,true
,"",12345678901234567890123456789012345678,,
9223372036854775807,"two
lines €",-0.000000000000000000000000000001,0001-01-01T13:45:10.250,false
-9223372036854775808,,-1.2345678901234567890123456789012345678,9999-12-31T23:59:59.999,
0,"\t \r",1E+99,1969-12-31T00:00:01.000,true
"""


def tool(*arguments: str, text: str = "") -> str:
    """What the tool prints, byte for byte."""
    done = subprocess.run(
        [os.environ["ZVWT_TOOL"], *arguments],
        input=text.encode(),
        capture_output=True,
        check=True,
    )
    return done.stdout.decode()


def python(program: str, **variables: str) -> subprocess.CompletedProcess:
    """Runs a program of its own."""
    return subprocess.run(
        [sys.executable, "-c", program],
        env={**os.environ, **variables},
        capture_output=True,
        text=True,
        check=False,
    )


class TableTest(unittest.TestCase):
    def setUp(self) -> None:
        self.directory = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.directory)
        self.manager = zvwt.Manager(self.directory)
        self.addCleanup(self.manager.close)

    def files(self) -> list:
        return os.listdir(self.directory)

    def make(self, columns: list, rows: list) -> str:
        with self.manager.create(columns) as table:
            table.extend(rows)
        return table.name

    def make_counting(self, rows: int) -> str:
        return self.make([("number", int)], ((i,) for i in range(rows)))

    def read(self, name: str, **how: object) -> list:
        with self.manager.open(name, **how) as rows:
            return list(rows)

    def numbers(self, name: str, **how: object) -> list:
        return [number for (number,) in self.read(name, **how)]


class Values(TableTest):
    def test_are_those_that_the_tool_imports_and_exports(self) -> None:
        words = ["n=int", "t=string", "r=real", "d=date", "b=bool"]
        types = [word for pair in words for word in ("--type", pair)]
        imported = tool("import", "--dir", self.directory, *types, "-", text=CSV).strip()
        with self.manager.open(imported) as rows:
            self.assertEqual([(c.name, c.type) for c in rows.columns], COLUMNS)
            self.assertEqual(list(rows), ROWS)
        written = self.make(COLUMNS, ROWS)
        exported = tool("export", "--dir", self.directory, imported)
        self.assertEqual(tool("export", "--dir", self.directory, written), exported)
        self.assertIn("sound, 5 rows", tool("check", "--dir", self.directory, written))

    def test_of_a_batch_are_those_of_single_rows(self) -> None:
        rows = ROWS * 1000
        with self.manager.create(COLUMNS) as table:
            table.append(list(rows[0]))
            table.extend(rows[1:-1])
            self.assertEqual(table.row_count, len(rows) - 1)
            table.append(rows[-1])
        self.assertEqual(self.read(table.name), rows)

    def test_of_every_column_may_be_null_or_none(self) -> None:
        for value, kind in zip(ROWS[0], TYPES):
            for rows in ([(value,)] * 3, [(None,)] * 3, [(value,), (None,), (value,)]):
                self.assertEqual(self.read(self.make([("a", kind)], rows)), rows)

    def test_of_kin_types_are_taken(self) -> None:
        columns = [("r", float), ("d", date), ("b", bool), ("r2", Decimal)]
        name = self.make(columns, [(0.1, date(2024, 2, 29), 1, 7), (1e300, None, 0, True)])
        self.assertEqual(
            self.read(name),
            [
                (Decimal("0.1"), datetime(2024, 2, 29), True, Decimal(7)),
                (Decimal("1E+300"), None, False, Decimal(1)),
            ],
        )
        with self.manager.open(name, reals=float) as rows:
            self.assertIs(rows.columns[0].type, float)
            self.assertEqual([row[0] for row in rows], [0.1, 1e300])
        with self.assertRaises(TypeError):
            self.manager.open(name, reals=int)

    def test_of_dates_are_cut_to_milliseconds(self) -> None:
        rows = [(datetime.max,), (datetime(2024, 2, 29, 23, 59, 59, 999999),)]
        cut = [(row[0].replace(microsecond=999000),) for row in rows]
        self.assertEqual(self.read(self.make([("d", datetime)], rows)), cut)

    def test_that_are_no_utf_8_survive(self) -> None:
        text = b"a\xff\xc3".decode("utf-8", "surrogateescape")
        self.assertEqual(self.read(self.make([("t", str)], [(text,), ("ü",)])), [(text,), ("ü",)])

    def test_of_long_texts_take_no_memory_together(self) -> None:
        with self.manager.create([("n", int), ("t", str)]) as table:
            tracemalloc.start()
            try:
                table.extend((i, str(i % 10) * 100000) for i in range(200))
                _, peak = tracemalloc.get_traced_memory()
            finally:
                tracemalloc.stop()
        self.assertLess(peak, 6 << 20)  # of 20 MB
        self.assertEqual(self.read(table.name)[199], (199, "9" * 100000))

    def test_in_rows_without_columns_and_in_wide_rows(self) -> None:
        name = self.make([(f"c{i}", int) for i in range(5000)], [range(5000)] * 3)
        self.assertEqual(self.read(name), [tuple(range(5000))] * 3)
        self.assertEqual(self.read(f"zvwt:{name}"), [()] * 3)


class Reading(TableTest):
    def test_backwards_and_of_parts(self) -> None:
        name = self.make([("n", int), ("t", str)], [(i, str(i)) for i in range(9000)])
        self.assertEqual([n for n, _ in self.read(name, backwards=True)], list(range(8999, -1, -1)))
        with self.manager.open(f"zvwt:{name}?rows=5,3&col=x,t&col=k,42,2&col=n,,3") as rows:
            self.assertEqual(list(rows.columns), [("x", str), ("k", int), ("n", Decimal)])
            self.assertEqual(list(rows), [(str(i), 42, None) for i in range(5, 8)])
            self.assertEqual(rows.name, name)
            self.assertEqual(rows.row_count, 9000)

    def test_goes_on_and_starts_again(self) -> None:
        name = self.make_counting(10000)
        for backwards in False, True:
            expected = self.numbers(name, backwards=backwards)
            with self.manager.open(name, backwards) as rows:
                seen = [number for (number,), _ in zip(rows, range(5))]
                seen += [number for (number,) in rows]  # zip has taken one more
                self.assertEqual(seen[:5] + seen[5:], expected[:5] + expected[6:])
                self.assertEqual(list(rows), [])
                rows.rewind()
                loop = iter(rows)
                self.assertEqual(next(loop), (expected[0],))
                rows.rewind()
                self.assertEqual([number for (number,) in loop], expected)

    def test_goes_on_where_it_was_when_it_cannot_start_again(self) -> None:
        name = self.make_counting(10000)
        with self.manager.open(name) as rows:
            loop = iter(rows)
            self.assertEqual(next(loop), (0,))
            self.manager.delete(name)
            self.assertRaisesRegex(zvwt.Error, "^1353: ", rows.rewind)
            self.assertEqual([number for (number,) in loop], list(range(1, 10000)))

    def test_goes_on_behind_an_interrupt(self) -> None:
        name = self.make_counting(10)
        for interrupted in itertools.count(1):
            left = interrupted

            def interrupt(frame, event, _) -> None:
                nonlocal left
                if frame.f_code.co_name in ("_read_behind", "_rows_of") and "return" in event:
                    left -= 1
                    if left == 0:
                        raise KeyboardInterrupt

            seen: list = []
            with self.manager.open(name) as rows:
                rows._batch_rows = 3
                sys.setprofile(interrupt)
                try:
                    seen.extend(rows)
                except KeyboardInterrupt:
                    pass
                finally:
                    sys.setprofile(None)
                seen.extend(rows)
            self.assertEqual(seen, [(i,) for i in range(10)], interrupted)
            if left > 0:
                break
        self.assertGreater(interrupted, 12)

    def test_by_two_at_once(self) -> None:
        name = self.make_counting(20000)
        with self.manager.open(name) as forwards, self.manager.open(name, True) as backwards:
            self.assertTrue(all(a + b == 19999 for (a,), (b,) in zip(forwards, backwards)))

    def test_of_a_damaged_row_costs_that_row(self) -> None:
        name = self.make_counting(3)
        [element] = [file for file in self.files() if file.startswith("zvwte_")]
        path = pathlib.Path(self.directory, element)
        content = bytearray(path.read_bytes())
        content[9] = 7  # the tag of row 1
        path.write_bytes(content)
        with self.manager.open(name) as rows:
            seen = []
            with self.assertRaisesRegex(zvwt.Error, "^1301: "):
                seen.extend(rows)
            seen.extend(rows)
        self.assertEqual(seen, [(0,), (2,)])

    def test_by_threads_gives_each_row_once(self) -> None:
        name = self.make_counting(50000)
        shared: collections.deque = collections.deque()
        with self.manager.open(name) as rows:
            threads = [threading.Thread(target=lambda: shared.extend(rows)) for _ in range(4)]
            for thread in threads:
                thread.start()
            for thread in threads:
                thread.join()
        self.assertEqual(sorted(shared), [(i,) for i in range(50000)])


class Refusals(TableTest):
    def test_of_values_lose_no_other_row(self) -> None:
        refused = [
            ((1,), ValueError),
            ((1, "a", 1, None, True, 5), ValueError),
            ((1.5, None, None, None, None), TypeError),
            (("1", None, None, None, None), TypeError),
            ((2**63, None, None, None, None), zvwt.Error),
            ((1, b"bytes", None, None, None), TypeError),
            ((1, "zero\0", None, None, None), ValueError),
            ((1, None, "1", None, None), TypeError),
            ((1, None, Decimal("1" + "0" * 37 + "1"), None, None), zvwt.Error),
            ((1, None, Decimal("1." + "0" * 38 + "1"), None, None), zvwt.Error),
            ((1, None, float("nan"), None, None), zvwt.Error),
            ((1, None, None, "2024-02-29", None), TypeError),
            ((1, None, None, datetime(2024, 2, 29, tzinfo=timezone.utc), None), ValueError),
            ((1, None, None, None, "true"), TypeError),
            ((1, None, None, None, 1.0), TypeError),
            ((1, None, None, None, Decimal(0)), TypeError),
            ((1, None, None, None, []), TypeError),
            ((1, None, None, None, 2), TypeError),
            ((10**5000, None, None, None, None), (ValueError, zvwt.Error)),
            ((1, None, 10**5000, None, None), (ValueError, zvwt.Error)),
            ((1, "\ud800", None, None, None), ValueError),
            (5, TypeError),
        ]
        expected = []
        with self.manager.create(COLUMNS) as table:
            for row, error in refused:
                with self.subTest(row=row):
                    self.assertRaises(error, table.append, row)
                    self.assertRaises(error, table.extend, ROWS * 400 + [row] + ROWS)
                    expected += ROWS * 400
        self.assertEqual(self.read(table.name), expected)

    def test_by_the_source_of_the_rows_keep_those_before(self) -> None:
        def source():
            row = [0]
            for row[0] in range(1000):
                yield row  # always the same list
            raise KeyError("source")

        with self.manager.create([("n", int)]) as table:
            self.assertRaises(KeyError, table.extend, source())
        self.assertEqual(self.numbers(table.name), list(range(1000)))

    def test_have_the_text_of_the_library(self) -> None:
        with self.manager.create([("n", int)]) as table:
            with self.assertRaisesRegex(zvwt.Error, '^1799: .*"9223372036854775808" is no integer'):
                table.append((2**63,))
        with self.assertRaisesRegex(zvwt.Error, "^1353: .*zvwt_missing"):
            self.manager.open("zvwt_missing")
        with self.assertRaisesRegex(zvwt.Error, "^1353: .*zvwt_missing"):
            self.manager.delete("zvwt_missing")
        with self.assertRaisesRegex(zvwt.Error, "^1790: .*http"):
            self.manager.open("http:zvwt_a")
        with self.assertRaisesRegex(zvwt.Error, "^1666: .*A"):
            self.manager.create([("a", int), ("A", str)])
        with self.assertRaisesRegex(zvwt.Error, "Cannot create zero columns"):
            self.manager.create([])
        with zvwt.Manager(os.path.join(self.directory, "missing")) as manager:
            with self.assertRaisesRegex(zvwt.Error, "^1417: "):
                manager.create([("a", int)])
        self.assertEqual(self.files(), [table.name])

    def test_of_values_name_the_column_and_the_value(self) -> None:
        said = {
            ("x", None, None, None, None): "column \"n\": 'x' is no int",
            (None, b"t", None, None, None): "column \"t\": b't' is no str",
            (None, "a\0", None, None, None): r"""column "t": 'a\\x00' has a zero character""",
            (None, "\ud800", None, None, None): r"""column "t": '\\ud800' has a surrogate""",
            (None, None, "1", None, None): "column \"r\": '1' is no Decimal, float or int",
            (None, None, None, "x" * 500, None): "column \"d\": 'x+[.]+x+' is no date",
            (None, None, None, None, 1.0): 'column "b": 1.0 is no bool',
            (None,): "a row of 1 values for 5 columns",
            7: "7 is no row of values",
        }
        with self.manager.create(COLUMNS) as table:
            for row, text in said.items():
                for taken in (table.append, row), (table.extend, ROWS[:2] + [row]):
                    with self.assertRaisesRegex((TypeError, ValueError), f"^{text}"):
                        taken[0](taken[1])
            self.assertRaisesRegex(TypeError, "^7 is no collection of rows$", table.extend, 7)
            self.assertEqual(table.row_count, 2 * len(said))

    def test_of_arguments_are_of_their_descriptions(self) -> None:
        manager, path = self.manager, pathlib.Path("a")
        for text, call, argument in (
            ("the table: None is no str", manager.open, None),
            ("the table: b'a' is no str", manager.open, b"a"),
            ("the table: .*Path.'a'. is no str", manager.open, path),
            ("the table: None is no str", manager.delete, None),
            ("a directory is a str or a path, and b'a' is not", zvwt.Manager, b"a"),
            ("a directory is a str or a path, and 5 is not", zvwt.Manager, [5]),
            ("None is no directory and no list of directories", zvwt.Manager, None),
            ("a column is a pair .*, and 'ab' is not", manager.create, {"ab": int}),
            ("a column cannot be of the type 5", manager.create, [("a", 5)]),
            ("the name of a column: 5 is no str", manager.create, [(5, int)]),
            ("5 is no list of columns", manager.create, 5),
        ):
            with self.assertRaisesRegex(TypeError, f"^{text}$"):
                call(argument)
        self.assertRaisesRegex(TypeError, "None is no str", zvwt.Manager, name=None)

    def test_of_arguments_come_before_anything_is_done(self) -> None:
        self.assertRaises(TypeError, self.manager.create, [("a", complex)])
        self.assertRaises(TypeError, self.manager.create, [(1, int)])
        self.assertRaises(ValueError, self.manager.create, [("a\0b", int)])
        self.assertRaises(ValueError, self.manager.open, "zvwt_\0")
        self.assertRaises(ValueError, zvwt.Manager, self.directory + os.pathsep + "x")
        self.assertRaises(ValueError, zvwt.Manager, "")
        self.assertEqual(self.files(), [])


class Endings(TableTest):
    def test_of_a_writer_keep_its_table_only_when_it_is_closed(self) -> None:
        with self.assertRaises(KeyError):
            with self.manager.create([("n", int)]) as table:
                table.append((1,))
                raise KeyError
        with self.manager.create([("n", int)]) as table:
            table.discard()
        table = self.manager.create([("n", int)])
        table.append((1,))
        del table
        self.assertEqual(self.files(), [])
        table = self.manager.create([("n", int)])
        table.close()
        table.close()
        table.discard()
        with self.assertRaisesRegex(zvwt.Error, "closed"):
            table.append((1,))
        self.assertEqual(self.read(table.name), [])
        self.manager.delete(table.name)
        self.assertEqual(self.files(), [])

    def test_of_a_manager_end_what_it_has_opened(self) -> None:
        name = self.make_counting(10000)
        reader = self.manager.open(name)
        loop = iter(reader)
        next(loop)
        with self.assertRaisesRegex(zvwt.Error, "closed"):
            with self.manager.create([("n", int)]) as writer:
                self.manager.close()
        self.assertEqual(len(self.files()), 3)
        self.manager.close()
        reader.close()
        for call in (
            lambda: list(loop),
            lambda: list(reader),
            reader.rewind,
            lambda: reader.row_count,
            lambda: writer.extend([(1,)]),
            lambda: self.manager.open(name),
            lambda: self.manager.delete(name),
            lambda: self.manager.create([("n", int)]),
        ):
            with self.assertRaisesRegex(zvwt.Error, "closed"):
                call()

    def test_of_a_manager_reach_what_is_just_being_opened(self) -> None:
        name = self.make_counting(3)
        done = python(
            "import zvwt\n"
            "class Closing(zvwt.Manager):\n"
            "    def _add_cursor(self, cursor):\n"
            "        super()._add_cursor(cursor)\n"
            "        self.close()  # as another thread may\n"
            f"for end in lambda m: m.open({name!r}), lambda m: m.create([('n', int)]):\n"
            "    try:\n"
            f"        end(Closing({self.directory!r}))\n"
            "    except zvwt.Error as error:\n"
            "        print(error)\n"
        )
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(done.stdout, "The table is closed.\n" * 2)

    def test_come_once_as_nothing_can_be_copied(self) -> None:
        name = self.make_counting(3)
        with self.manager.open(name) as reader, self.manager.create([("n", int)]) as writer:
            for thing in self.manager, reader, writer:
                for doubled in copy.copy, copy.deepcopy, pickle.dumps:
                    with self.assertRaisesRegex(TypeError, "neither copied nor pickled"):
                        doubled(thing)

    def test_come_in_any_order(self) -> None:
        name = self.make_counting(3)
        for order in ("mrw", "rwm", "wmr", "cycle"):
            held = {"m": zvwt.Manager(self.directory)}
            held["r"] = held["m"].open(name)
            held["w"] = held["m"].create([("n", int)])
            held["w"].append((1,))
            if order == "cycle":
                held["m"].held = held["r"].held = held["w"].held = held
                order = ""
            for thing in order:
                if thing == "r":
                    self.assertEqual(len(list(held["r"])), 3)
                del held[thing]
            del held
            gc.collect()
            self.assertEqual(len(self.files()), 3, order)
        rows = self.manager.open(name)
        loop = iter(rows)
        del rows
        self.assertEqual(len(list(loop)), 3)

    def test_of_the_program_are_silent(self) -> None:
        name = self.make_counting(3)
        done = python(
            "import sys, zvwt\n"
            f"manager = zvwt.Manager({self.directory!r})\n"
            f"reader = manager.open({name!r})\n"
            "loop = iter(reader); next(loop)\n"
            "writer = manager.create([('n', int)]); writer.append((1,))\n"
            "sys.cycle = [manager, reader, loop, writer]; sys.cycle.append(sys.cycle)\n"
        )
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))
        tool("clean", "--dir", self.directory, "--older-than", "0s")
        self.assertEqual(self.numbers(name), [0, 1, 2])


class Module(unittest.TestCase):
    def test_finds_the_library_beside_it_and_says_when_there_is_none(self) -> None:
        with tempfile.TemporaryDirectory() as directory:
            shutil.copy(zvwt.__file__, directory)
            library = os.path.abspath(os.environ["ZVWT_LIBRARY"])
            os.symlink(library, os.path.join(directory, "libzvwt.so.1"))
            done = python(
                "import zvwt; print(zvwt._library._name)", PYTHONPATH=directory, ZVWT_LIBRARY=""
            )
            self.assertEqual(done.stdout.strip(), os.path.join(directory, "libzvwt.so.1"))
        done = python("import zvwt", ZVWT_LIBRARY="missing.so")
        self.assertRegex(done.stderr, "ImportError: .*missing.so.*ZVWT_LIBRARY")

    def test_does_what_the_guide_and_its_own_text_say(self) -> None:
        guide = pathlib.Path(os.environ["ZVWT_SOURCE"], "docs", "guide.md").read_text("utf-8")
        [snippet] = re.findall(r"```python\n(.*?)```", guide, re.DOTALL)
        done = python(snippet)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(done.stdout, "1 Lisbon None\n2 Oslo 1048-01-01 00:00:00\n")


if __name__ == "__main__":
    unittest.main()
