"""Files of this Debian through the command line tool, beside what SQLite and sort make of them.

The environment variable ZVWT_TOOL names the program.
"""

from __future__ import annotations

import json
import os
import pathlib
import sqlite3
import subprocess
import tempfile
import unittest
from collections.abc import Iterable, Sequence
from typing import Optional

TOOL = os.environ["ZVWT_TOOL"]
ISO_CODES = pathlib.Path("/usr/share/iso-codes/json")
UNICODE_DATA = pathlib.Path("/usr/share/unicode/UnicodeData.txt")
ZONES = pathlib.Path("/usr/share/zoneinfo/zone1970.tab")

Row = Sequence[Optional[str]]


def field_text(field: Optional[str], delimiter: str) -> str:
    """A field in the one form that an export has."""
    if field is None:
        return ""
    if field == "" or any(special in field for special in (delimiter, '"', "\n", "\r")):
        return '"' + field.replace('"', '""') + '"'
    return field


def csv_text(rows: Iterable[Row], delimiter: str = ",") -> str:
    return "".join(
        delimiter.join(field_text(field, delimiter) for field in row) + "\n" for row in rows
    )


def package_fields() -> list[dict[str, str]]:
    """What apt knows of all packages, or else what dpkg knows of those that are installed."""
    lists = subprocess.run(["apt-cache", "dumpavail"], capture_output=True, check=False).stdout
    if lists.count(b"\n\n") < 1000:
        lists = pathlib.Path("/var/lib/dpkg/status").read_bytes()
    packages = []
    for paragraph in lists.decode("utf-8").split("\n\n"):
        fields: dict[str, str] = {}
        name = ""
        for line in paragraph.split("\n"):
            if line.startswith(" "):
                fields[name] += "\n" + line
            elif line:
                name, _, value = line.partition(":")
                fields[name] = value.strip()
        if fields:
            packages.append(fields)
    return packages


class RealFiles(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def tool(self, verb: str, *words: str, data: Optional[bytes] = None) -> bytes:
        done = subprocess.run(
            [TOOL, verb, "--dir", str(self.folder), *words],
            input=data,
            capture_output=True,
            check=False,
        )
        self.assertEqual(done.returncode, 0, done.stderr.decode())
        return done.stdout

    def make_table(self, text: str, *options: str) -> str:
        return self.tool("import", *options, "-", data=text.encode()).decode().rstrip()

    def types_of(self, table: str) -> dict[str, str]:
        columns = json.loads(self.tool("info", "--json", table))["columns"]
        return {column["name"]: column["type"] for column in columns}

    def export(self, table: str, *options: str) -> str:
        return self.tool("export", *options, table).decode()

    def check_rows(self, header: Sequence[str], rows: list[Row], keys: Sequence[str]) -> str:
        """Import, export in both forms, sort by the keys; the table's name."""
        text = csv_text([header, *rows])
        table = self.make_table(text)
        self.assertEqual(self.export(table), text)
        self.check_json(table, header, rows)
        self.check_order(table, header, rows, keys)
        return table

    def check_json(self, table: str, header: Sequence[str], rows: list[Row]) -> None:
        lines = self.export(table, "--format", "jsonl").splitlines()
        self.assertEqual(len(lines), len(rows))
        for line, row in zip(lines, rows):
            values = json.loads(line, parse_int=str, parse_float=str)
            self.assertEqual(values, dict(zip(header, row)))

    def database_of(
        self, table: str, header: Sequence[str], rows: list[Row]
    ) -> sqlite3.Connection:
        """The rows in a table "t" of SQLite, with the types that the tool has found."""
        types = self.types_of(table)
        columns = ", ".join(
            f'"{name}" {"INTEGER" if types[name] == "int" else "TEXT"}' for name in header
        )
        database = sqlite3.connect(":memory:")
        self.addCleanup(database.close)
        database.execute(f"CREATE TABLE t ({columns})")
        marks = ", ".join("?" * len(header))
        database.executemany(f"INSERT INTO t VALUES ({marks})", rows)
        return database

    def selected(self, database: sqlite3.Connection, header: Sequence[str], rest: str) -> str:
        result = database.execute(f"SELECT * FROM t {rest}").fetchall()
        texts = [[None if value is None else str(value) for value in row] for row in result]
        return csv_text([header, *texts])

    def check_order(
        self, table: str, header: Sequence[str], rows: list[Row], keys: Sequence[str]
    ) -> None:
        """What SQLite orders by the same keys, rows with equal ones as they came."""
        database = self.database_of(table, header, rows)
        by = ", ".join(f'"{key}" NULLS FIRST' for key in keys)
        result = self.tool("sort", "--memory", "64K", "--by", ",".join(keys), table)
        self.assertEqual(
            self.export(result.decode().rstrip()),
            self.selected(database, header, f"ORDER BY {by}, rowid"),
        )

    def check_choice(
        self, table: str, header: Sequence[str], rows: list[Row], *conditions: str, query: str
    ) -> None:
        """The rows that satisfy conditions, beside those of a condition of SQLite's."""
        database = self.database_of(table, header, rows)
        options = [f"--where={condition}" for condition in conditions]
        expected = self.selected(database, header, f"WHERE {query} ORDER BY rowid")
        self.assertGreater(expected.count("\n"), 1)
        self.assertEqual(self.export(table, *options), expected)

    def test_package_lists(self) -> None:
        header = ["package", "version", "size", "section", "depends", "description"]
        names = ["Package", "Version", "Installed-Size", "Section", "Depends", "Description"]
        rows = [[fields.get(name) for name in names] for fields in package_fields()]
        table = self.check_rows(header, rows, ["section", "size", "package"])
        self.assertEqual(self.types_of(table)["size"], "int")
        self.assertEqual(int(self.tool("count", table)), len(rows))
        self.check_choice(
            table,
            header,
            rows,
            "size >= 1000",
            "section != admin",
            "description ~ ibrary",
            query="size >= 1000 AND section <> 'admin' AND instr(description, 'ibrary')",
        )
        self.check_texts_as_sort_does(table, "package")

    def check_texts_as_sort_does(self, table: str, column: str) -> None:
        """Of texts without line breaks."""
        texts = self.export(table, "--select", column, "--no-header")
        expected = subprocess.run(
            ["sort"], input=texts, capture_output=True, text=True, check=True, env={"LC_ALL": "C"}
        ).stdout
        result = self.tool("sort", "--select", column, "--by", column, table).decode().rstrip()
        self.assertEqual(self.export(result, "--no-header"), expected)

    def test_countries_and_languages(self) -> None:
        for name, keys in (
            ("3166-1", ["name"]),
            ("3166-2", ["type", "code"]),
            ("639-3", ["scope", "type", "name"]),
            ("4217", ["numeric", "alpha_3"]),
        ):
            with self.subTest(name):
                text = (ISO_CODES / f"iso_{name}.json").read_text(encoding="utf-8")
                entries = json.loads(text)[name]
                header = sorted({field for entry in entries for field in entry})
                rows = [[entry.get(field) for field in header] for entry in entries]
                table = self.check_rows(header, rows, keys)
                # Numbers with leading zeros stay what they are.
                self.assertEqual(self.types_of(table).get("numeric", "string"), "string")

    def test_time_zones(self) -> None:
        header = ["codes", "coordinates", "zone", "comments"]
        lines = ["\t".join(header)] + [
            line
            for line in ZONES.read_text(encoding="utf-8").splitlines()
            if not line.startswith("#")
        ]
        table = self.make_table("\n".join(lines), "--delimiter", "tab", "--ragged")
        rows = [(line.split("\t") + [None] * 3)[:4] for line in lines]
        self.assertEqual(self.export(table, "--delimiter", "tab"), csv_text(rows, "\t"))
        self.check_order(table, header, rows[1:], ["comments", "zone"])
        self.check_choice(
            table,
            header,
            rows[1:],
            "comments is not null",
            "zone < 'Asia/'",
            query="comments IS NOT NULL AND zone < 'Asia/'",
        )

    def test_unicode_data(self) -> None:
        text = UNICODE_DATA.read_text(encoding="utf-8")
        options = ["--delimiter", ";", "--no-header"]
        table = self.make_table(text, *options)
        self.assertEqual(self.export(table, *options), text)
        rows = [[field or None for field in line.split(";")] for line in text.splitlines()]
        header = [f"c{i + 1}" for i in range(len(rows[0]))]
        self.assertEqual(self.types_of(table)["c4"], "int")
        self.assertEqual(self.types_of(table)["c1"], "string")
        self.check_order(table, header, rows, ["c4", "c3", "c2"])


if __name__ == "__main__":
    unittest.main()
