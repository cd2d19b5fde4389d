"""The command line tool as a person at a terminal sees it: a screen, keys, colours, progress.

The environment variable ZVWT_TOOL names the program.
"""

import os
import pathlib
import re
import signal
import subprocess
import tempfile
import time
import unittest

import pexpect
import pyte

TOOL = os.environ["ZVWT_TOOL"]
WIDTH, HEIGHT = 60, 24


class Terminal:
    """A terminal in which one command runs to its end, or until keys end it."""

    def __init__(self, *words: str, width: int = WIDTH, **environment: str) -> None:
        self.screen = pyte.Screen(width, HEIGHT)
        self.raw = ""
        self._stream = pyte.Stream(self.screen)
        variables = {k: v for k, v in os.environ.items() if k not in ("NO_COLOR", "COLUMNS")}
        variables |= {"TERM": "xterm", **environment}
        self._child = pexpect.spawn(
            TOOL,
            list(words),
            dimensions=(HEIGHT, width),
            env=variables,
            encoding="utf-8",
            timeout=60,
            # A shell in the background would have its commands ignore it.
            preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL),
        )

    def read_slowly_until(self, pattern: str) -> None:
        """Lets the command do a little at a time, so that its work lasts on any machine."""
        while True:
            self._child.kill(signal.SIGSTOP)
            time.sleep(0.05)
            self._child.kill(signal.SIGCONT)
            if self._child.expect([pattern, pexpect.TIMEOUT], timeout=0.005) == 0:
                self._take(self._child.before + self._child.after)
                return

    def press(self, key: str) -> None:
        self._child.sendcontrol(key)

    def finish(self) -> int:
        """Waits for the end: the exit code, or the number of the signal that ended it, negative."""
        self._child.expect(pexpect.EOF)
        self._take(self._child.before)
        self._child.close()
        status = self._child.exitstatus
        return -self._child.signalstatus if status is None else status

    def lines(self) -> list[str]:
        """The screen without its empty lines."""
        return [line.rstrip() for line in self.screen.display if line.strip()]

    def _take(self, text: str) -> None:
        self.raw += text
        self._stream.feed(text)


class ToolInATerminal(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.tables = self.folder / "tables"
        self.tables.mkdir()

    def file(self, text: str) -> str:
        path = self.folder / "data.csv"
        path.write_text(text, encoding="utf-8")
        return str(path)

    def run_in(self, verb: str, *words: str, **settings) -> Terminal:
        terminal = Terminal(verb, "--dir", str(self.tables), *words, **settings)
        terminal.code = terminal.finish()
        return terminal

    def make_table(self, text: str) -> str:
        terminal = self.run_in("import", self.file(text))
        self.assertEqual(terminal.code, 0, terminal.raw)
        return terminal.lines()[-2 if terminal.lines()[-1].startswith("zvwt:") else -1]

    def large_file(self, rows: int) -> str:
        return self.file("n,text\n" + "".join(f"{i},row {i * 7919 % rows}\n" for i in range(rows)))

    def test_shows_rows_within_the_width(self) -> None:
        table = self.make_table(
            "id,note,empty,last\n1," + "long " * 40 + ",,x\n20,\u6f22\u5b57 e\u0301,,yy\n"
        )
        terminal = self.run_in("show", table)
        rows = terminal.lines()
        self.assertTrue(all(len(row) <= WIDTH for row in rows), rows)
        self.assertRegex(rows[0], r"^id\s+note\s+empty\s+last$")
        self.assertRegex(rows[2], r"^ 1\s+long long .*\u2026\s+\u2205\s+x$")
        # The columns stand below each other although a character takes two places.
        self.assertEqual(rows[2].index("\u2205"), self._column_of(terminal, "\u2205", 3))
        wide = self.run_in("show", "--wide", table, width=400)
        self.assertIn(("long " * 40).rstrip(), wide.lines()[2])

    @staticmethod
    def _column_of(terminal: Terminal, character: str, row: int) -> int:
        cells = terminal.screen.buffer[row]
        return next(x for x in range(terminal.screen.columns) if cells[x].data == character)

    def test_tells_what_does_not_fit(self) -> None:
        names = [f"column{i}" for i in range(40)]
        table = self.make_table(",".join(names) + "\n" + ",".join(["123456"] * 40) + "\n")
        terminal = self.run_in("show", table)
        self.assertTrue(all(len(row) <= WIDTH for row in terminal.lines()), terminal.lines())
        self.assertRegex(terminal.lines()[0], r"^column0 .*\u2026.* column39$")
        self.assertRegex(terminal.raw, r"zvwt: \d+ columns")
        uri = f"zvwt:{table}?col=column0&col=column1"
        for words in (["show", uri], ["info", uri], ["info", "--columns", uri], ["uri", uri]):
            with self.subTest(words=words):
                self.check_narrow(words[0], *words[1:])

    def check_narrow(self, verb: str, *words: str) -> None:
        """Lines of a grid hold on a terminal of few columns, and what is left out can be had."""
        said = r"zvwt: \d+ columns? do(es)? not fit; --wide"
        narrow = self.run_in(verb, *words, width=10, NO_COLOR="1")
        rows = [line for line in narrow.raw.split("\r\n") if "\u2026" in line]
        self.assertTrue(rows and all(len(row) < 10 for row in rows), rows)
        self.assertRegex(narrow.raw, said)
        wide = self.run_in(verb, "--wide", *words, width=10, NO_COLOR="1")
        self.assertNotRegex(wide.raw, f"{said}|\u2026")

    def test_is_colourful_only_where_that_is_wanted(self) -> None:
        table = self.make_table("a,b\n1,\n")
        plain = self.run_in("show", table, NO_COLOR="1")
        self.assertNotIn("\x1b", plain.raw)
        self.assertNotIn("\x1b", self.run_in("show", table, TERM="dumb").raw)
        coloured = self.run_in("show", table)
        self.assertTrue(coloured.screen.buffer[0][0].bold)
        self.assertEqual(coloured.lines(), plain.lines())
        self.assertNotIn("\x1b", self.run_in("show", table, NO_COLOR="1").raw)
        coloured = self.run_in("show", table, NO_COLOR="")
        self.assertTrue(coloured.screen.buffer[0][0].bold)

    def test_sends_no_commands_of_data(self) -> None:
        table = self.make_table('a,"b\x1b[2J"\n"\x1b]0;title\x07\x9b31m",\x7f\n')
        terminal = self.run_in("show", table, NO_COLOR="1")
        self.assertNotRegex(terminal.raw, "[\x00-\x08\x0b\x0c\x0e-\x1f\x7f]")
        self.assertIn("\\x1b", terminal.raw)
        for form in ("csv", "jsonl"):
            exported = self.run_in("export", "--format", form, table)
            self.assertNotRegex(exported.raw, "[\x00-\x08\x0b\x0c\x0e-\x1f\x7f-\x9f]")
            self.assertRegex(exported.raw, r"\\x1b\]0;title|\\u001b\]0;title")
            self.assertEqual(exported.raw.count("zvwt: "), 1 if form == "csv" else 0)
        mistyped = self.run_in("show", "\x1b[2Jtable", NO_COLOR="1")
        self.assertNotIn("\x1b", mistyped.raw)

    def test_shows_progress_and_takes_it_away(self) -> None:
        path = self.large_file(600_000)
        terminal = Terminal("import", "--dir", str(self.tables), "--sort", "text", path)
        terminal.read_slowly_until(r"\d+ ?%")
        self.assertEqual(terminal.finish(), 0)
        self.assertNotIn("%", "".join(terminal.lines()))
        for status in re.findall(r"\r([^\r\n]*)", terminal.raw):
            self.assertLess(len(status), WIDTH)
        quiet = Terminal("import", "-q", "--dir", str(self.tables), path)
        self.assertEqual(quiet.finish(), 0)
        self.assertRegex(quiet.raw, r"^zvwt_\S+\r\n$")

    def test_keeps_data_from_streams_that_are_closed(self) -> None:
        """A file must not become the stream that the tool was started without."""
        data = pathlib.Path(self.large_file(60_000))
        verb = f'exec "$0" import --dir {self.tables} -'
        with data.open("rb") as rows:
            made = subprocess.run(
                ["sh", "-c", f"cat | {verb} 2>&-", TOOL], stdin=rows, stdout=subprocess.PIPE
            )
        self.assertEqual(made.returncode, 0)
        table = made.stdout.decode().rstrip()
        words = [TOOL, "export", "--dir", str(self.tables), table]
        self.assertEqual(subprocess.run(words, capture_output=True).stdout, data.read_bytes())
        for closed in ("<&-", ">&-"):
            failed = subprocess.run(
                ["sh", "-c", f"cat {data} | {verb} {closed}", TOOL], capture_output=True
            )
            self.assertEqual(failed.returncode, 5, failed.stderr)
        self.assertEqual(subprocess.run(words, capture_output=True).returncode, 0)

    def test_says_when_memory_is_short(self) -> None:
        def run_in(kilobytes: int, *words: str) -> subprocess.CompletedProcess:
            limited = f'ulimit -v {kilobytes} && exec "$0" "$@"'
            return subprocess.run(["sh", "-c", limited, TOOL, *words], capture_output=True)

        if run_in(40_000, "--version").returncode != 0:
            self.skipTest("this build of the tool takes more memory than others")
        words = ("import", "--dir", str(self.tables))
        for text in ("a\n" + "x" * 30_000_000, 'a\n"' + '""' * 30_000_000 + '"\n'):
            failed = run_in(40_000, *words, self.file(text))
            self.assertEqual(failed.returncode, 5, failed.stderr)
            self.assertIn(b"memory", failed.stderr)
            self.assertEqual(list(self.tables.iterdir()), [])
        # Wherever it ends, and whatever is being undone then.
        path = self.file('a,b\n1,"' + "x" * 300_000 + '"\n')
        limit = 1000
        while run_in(limit, "--version").returncode != 0:
            limit += 200
        for more in range(0, 6000, 200):
            ended = run_in(limit + more, *words, "--sort", "a", path)
            self.assertIn(ended.returncode, (0, 5), (more, ended.stderr))
            for file in self.tables.iterdir() if ended.returncode == 0 else []:
                file.unlink()
            self.assertEqual(list(self.tables.iterdir()), [], more)

    def test_leaves_nothing_when_it_is_interrupted(self) -> None:
        path = self.large_file(2_000_000)
        table = ""
        for words in (["import", path], ["import", "--sort", "text", path], ["sort", "--by", "text"]):
            if words[0] == "sort":
                table = self.make_table(pathlib.Path(path).read_text())
                words.append(table)
            before = sorted(self.tables.iterdir())
            terminal = Terminal(words[0], "--dir", str(self.tables), *words[1:])
            self.await_new_file(len(before))
            terminal.press("c")
            self.assertEqual(terminal.finish(), -2, terminal.raw)
            self.assertIn("zvwt: interrupted; what had been begun is removed", terminal.lines())
            self.assertEqual(sorted(self.tables.iterdir()), before)

    def await_new_file(self, count: int) -> None:
        end = time.monotonic() + 60
        while len(list(self.tables.iterdir())) == count and time.monotonic() < end:
            time.sleep(0.005)


if __name__ == "__main__":
    unittest.main()
