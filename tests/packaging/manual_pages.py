"""Whether the manual pages are well-formed and tell all that the programs say of themselves.

    manual_pages.py PAGES VELANTOR-SIM VEXA
"""

import os
import pathlib
import re
import shlex
import subprocess
import sys
import unittest

PAGES, SIMULATOR, UPLOADER = map(pathlib.Path, sys.argv[1:4])


def plain(text):
    """Text of a page without the escapes that our pages use."""
    return re.sub(r"\\f[BIR]", "", text).replace("\\-", "-")


def tags(page, section):
    """The entries of a section, as a reader sees them: what stands in the line after each ".TP"."""
    text = (PAGES / page).read_text()
    body = re.search(r'^\.SH "?%s"?\n(.*?)(?=^\.SH|\Z)' % section, text, re.M | re.S).group(1)
    found = []
    for line in re.findall(r"^\.TP\n\.(.*)$", body, re.M):
        macro, *words = shlex.split(plain(line))
        # The macros of two letters change the font from word to word and put no blanks between.
        found.append((" " if len(macro) == 1 else "").join(words))
    return found


def told(program, *arguments):
    """What a program prints."""
    run = subprocess.run([program, *arguments], stdout=subprocess.PIPE, text=True, check=False)
    return run.stdout


def simulator_help(beginning):
    """The entries of the part of the simulator's help that begins with those words."""
    part = told(SIMULATOR, "--help").partition(beginning)[2]
    lines = re.search(r"(?:^  .*\n)+", part, re.M).group()
    return re.findall(r"^  (\S+(?: [A-Z]+)?)  ", lines, re.M)


class WellFormed(unittest.TestCase):
    def pages(self):
        pages = sorted(PAGES.glob("*.1"))
        self.assertEqual([p.name for p in pages],
                         ["velantor-sim.1", "velantor-suite.1", "vexa.1"])
        return pages

    def test_mandoc_has_nothing_to_say(self):
        for page in self.pages():
            with self.subTest(page.name):
                self.assertEqual(told("mandoc", "-T", "lint", "-W", "style", page), "")

    def test_man_shows_it_without_a_warning(self):
        environment = {**os.environ, "LC_ALL": "C.UTF-8", "MANWIDTH": "80", "MANROFFSEQ": ""}
        for page in self.pages():
            with self.subTest(page.name):
                run = subprocess.run(
                    ["man", "--warnings", "-E", "UTF-8", "-Tutf8", "-Z", "-l", page],
                    stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                    env=environment, check=False)
                self.assertEqual((run.returncode, run.stderr), (0, ""))
                self.assertTrue(run.stdout)


class Simulator(unittest.TestCase):
    def compare(self, beginning, section):
        entries = simulator_help(beginning)
        self.assertGreater(len(entries), 10)
        self.assertEqual(tags("velantor-sim.1", section), entries)

    def test_options(self):
        self.compare("Usage: velantor-sim", "OPTIONS")

    def test_faults(self):
        self.compare("Faults are", "FAULTS")

    def test_commands(self):
        self.compare("Commands on", "COMMANDS")

    def test_pages_of_its_own(self):
        page = plain((PAGES / "velantor-sim.1").read_text())
        names = re.search(r"page of its own: (\S+)", told(SIMULATOR, "--help")).group(1).split("|")
        self.assertGreater(len(names), 3)
        for name in names:
            with self.subTest(name):
                self.assertRegex(page, r"(?m)^\.BR? %s( |$)" % re.escape(name))


class Uploader(unittest.TestCase):
    def test_options(self):
        usage = told(UPLOADER, "-?")
        options = [(letter + arguments).replace("[", "").replace("]", "")
                   for letter, arguments in re.findall(r"^ (-\w)((?: \[\w+\])*)", usage, re.M)]
        self.assertGreater(len(options), 17)
        # The page puts them in an order of its own.
        self.assertEqual(sorted(tags("vexa.1", "OPTIONS")), sorted(options))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
