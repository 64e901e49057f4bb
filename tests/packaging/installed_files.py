"""Installs the suite into a folder of its own and looks at what is there.

    installed_files.py CMAKE SOURCE BUILD
"""

import configparser
import gzip
import os
import pathlib
import re
import stat
import struct
import subprocess
import sys
import tempfile
import time
import unittest
import xml.etree.ElementTree

CMAKE = sys.argv[1]
SOURCE, BUILD = map(pathlib.Path, sys.argv[2:4])

PATIENCE = 120  # seconds until a start that hangs is given up

PROGRAMS = {"bin/velantor-sim", "bin/velantor-suite", "bin/vexa"}
PICTURE_SIZES = (16, 24, 32, 48, 64, 128, 256)
DOC = "share/doc/velantor-suite/"
FILES = {
    "share/applications/velantor-suite.desktop",
    DOC + "README.md",
    DOC + "changelog.gz",
    DOC + "copyright",
    DOC + "docs/formats.md",
    DOC + "docs/guide.md",
    "share/icons/hicolor/scalable/apps/velantor-suite.svg",
    *("share/icons/hicolor/%dx%d/apps/velantor-suite.png" % (s, s) for s in PICTURE_SIZES),
    "share/man/man1/velantor-sim.1.gz",
    "share/man/man1/velantor-suite.1.gz",
    "share/man/man1/vexa.1.gz",
    "share/metainfo/example.velantor.suite.metainfo.xml",
    "share/velantor-suite/device.txt",
}


def pictures_of(document):
    """The pictures that a document of the source tree shows, by their paths in that tree."""
    links = re.findall(r"!\[[^]]*\]\(([^)]+)\)", (SOURCE / document).read_text())
    folder = pathlib.PurePath(document).parent
    return {str(folder / link) for link in links}


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        before = os.umask(0o022)
        try:
            subprocess.run([CMAKE, "--install", BUILD, "--prefix", "/usr"], check=True,
                           env={**os.environ, "DESTDIR": cls.folder.name},
                           stdout=subprocess.DEVNULL)
        finally:
            os.umask(before)
        cls.root = pathlib.Path(cls.folder.name) / "usr"

    def test_set_of_files(self):
        found = {str(p.relative_to(self.root)) for p in self.root.rglob("*") if not p.is_dir()}
        pictures = pictures_of("README.md") | pictures_of("docs/guide.md")
        self.assertGreater(len(pictures), 10)
        self.assertEqual(found, PROGRAMS | FILES | {DOC + picture for picture in pictures})
        self.assertEqual([p.name for p in pathlib.Path(self.folder.name).iterdir()], ["usr"])

    def test_permissions(self):
        for path in [self.root, *self.root.rglob("*")]:
            name = str(path.relative_to(self.root))
            with self.subTest(name):
                wanted = 0o755 if path.is_dir() or name in PROGRAMS else 0o644
                self.assertEqual(oct(stat.S_IMODE(path.lstat().st_mode)), oct(wanted))

    def test_pictures_have_the_size_of_their_folder(self):
        for size in PICTURE_SIZES:
            with self.subTest(size):
                picture = (self.root / ("share/icons/hicolor/%dx%d/apps/velantor-suite.png"
                                        % (size, size))).read_bytes()
                self.assertEqual(picture[:8], b"\x89PNG\r\n\x1a\n")
                self.assertEqual(struct.unpack(">II", picture[16:24]), (size, size))

    def test_desktop_entry_names_what_is_there(self):
        entry = configparser.ConfigParser(interpolation=None)
        entry.optionxform = str
        entry.read(self.root / "share/applications/velantor-suite.desktop")
        commands = [section["Exec"] for section in entry.values() if "Exec" in section]
        self.assertEqual(commands, ["velantor-suite", "velantor-suite -f"])
        self.assertEqual(entry["Desktop Entry"]["TryExec"], "velantor-suite")
        self.assertEqual(entry["Desktop Entry"]["Icon"], "velantor-suite")

    def test_version_is_that_of_the_program(self):
        told = re.search(r'SOFTWARE_VERSION = QStringLiteral\("v([0-9.]+)"\)',
                         (SOURCE / "app/buildinfo.h").read_text()).group(1)
        metainfo = self.root / "share/metainfo/example.velantor.suite.metainfo.xml"
        releases = xml.etree.ElementTree.parse(metainfo).findall("releases/release")
        self.assertEqual(releases[0].get("version"), told)
        for name in ("velantor-sim", "velantor-suite", "vexa"):
            with self.subTest(name):
                page = gzip.decompress((self.root / ("share/man/man1/%s.1.gz" % name)).read_bytes())
                title = page.decode().splitlines()[0]
                self.assertIn('"Velantor Software Suite %s"' % told, title)
                self.assertNotRegex(page.decode(), "@[A-Z_]+@")

    def test_copyright_holds_the_whole_licence(self):
        copyright_file = (self.root / DOC / "copyright").read_text()
        shown = " ".join(copyright_file.replace("\n .\n", "\n").split())
        for paragraph in (SOURCE / "LICENSE").read_text().split("\n\n")[1:]:
            with self.subTest(paragraph[:20]):
                words = " ".join(paragraph.replace("Copyright (c)", "Copyright:").split())
                self.assertIn(words, shown)

    def test_uploader_is_the_one_that_the_suite_unpacks(self):
        uploader = (self.root / "bin/vexa").read_bytes()
        self.assertEqual(uploader, (BUILD / "bin/vexa.bin").read_bytes())
        with tempfile.TemporaryDirectory() as home:
            work = pathlib.Path(home) / "velantor-suite"
            suite = subprocess.Popen([self.root / "bin/velantor-suite"], stdout=subprocess.DEVNULL,
                                     env={**os.environ, "XDG_DATA_HOME": home})
            try:
                # The bundle's last member: by then everything else is in place.
                self.await_file(work / "checksums", suite)
            finally:
                suite.kill()
                suite.wait()
            copy = work / "vexa.bin"
            self.assertEqual(oct(stat.S_IMODE(copy.stat().st_mode)), "0o111")
            copy.chmod(0o500)
            self.assertEqual(copy.read_bytes(), uploader)

    def await_file(self, path, process):
        end = time.monotonic() + PATIENCE
        while not path.exists():
            self.assertIsNone(process.poll(), "the suite ended")
            self.assertLess(time.monotonic(), end, "the suite does not come up")
            time.sleep(0.02)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
