"""The suite as it is installed, in a folder of its own: what is there, and that it works away from where it was built."""

import gzip
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

from session import Session, main_program

PROGRAM = pathlib.Path(main_program(sys.argv))
BUILD = PROGRAM.parent.parent
SOURCES = pathlib.Path(__file__).resolve().parent.parent.parent
DRAWING = SOURCES / "tests/fuzz/corpus/pictures/drawing.wpg"

MODULES = {"browser": (("Internet", "Browse the Internet"), "Internet - "),
           "common": (("My Computer", "File manager"), "File Manager - c:\\"),
           "internet": (("Internet", "FTP client"), "FTP client"),
           "system": (("My Computer", "System Info"), "System Info"),
           "pictures": (("Utilities", "Picture viewer"), "Picture viewer - c:\\"),
           "piceditor": (("Utilities", "Picture editor"), "EditMe!")}
"""A tool of each module, as the launcher's button and item, and the title that its window opens with."""

ICONS = [f"{size}x{size}" for size in (16, 22, 24, 32, 48, 64, 96, 128, 256, 512)]
NAME = "io.github.vandrel.Vandrel"


def guide_pictures():
    """The pictures that the user guide shows."""
    guide = (SOURCES / "docs/user-guide.md").read_text(encoding="utf-8")
    return set(re.findall(r"\]\((pictures/[^)]+)\)", guide))


def expected(libraries):
    """Every file of an installed suite below its prefix, by the place of its own libraries."""
    shared = {f"{libraries}/libvandrel-{layer}.so" for layer in ("controls", "runtime")}
    modules = {f"{libraries}/vandrel-{module}.so" for module in MODULES}
    icons = {f"share/icons/hicolor/{size}/apps/{NAME}.png" for size in ICONS}
    icons.add(f"share/icons/hicolor/scalable/apps/{NAME}.svg")
    documents = {"user-guide.md", "copyright", "changelog.gz", "changelog.Debian.gz", *guide_pictures()}
    return {"bin/vandrel", f"{libraries}/vandrel-draw", *shared, *modules, *icons,
            f"share/applications/{NAME}.desktop", f"share/metainfo/{NAME}.metainfo.xml", "share/man/man1/vandrel.1.gz",
            "share/lintian/overrides/vandrel", *(f"share/doc/vandrel/{name}" for name in documents)}


def installed_files(prefix):
    return {str(path.relative_to(prefix)) for path in prefix.rglob("*") if not path.is_dir()}


def version():
    sources = (SOURCES / "CMakeLists.txt").read_text(encoding="utf-8")
    return re.search(r"^project\(Vandrel VERSION (\S+)", sources, re.M)[1]


def dynamic_section(path):
    return subprocess.run(["readelf", "--wide", "--dynamic", path], capture_output=True, text=True, check=True).stdout


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        stage = tempfile.mkdtemp(prefix="vandrel-stage-")
        cls.addClassCleanup(shutil.rmtree, stage)
        subprocess.run(["cmake", "--install", BUILD, "--prefix", "/usr"], env={**os.environ, "DESTDIR": stage},
                       stdout=subprocess.DEVNULL, check=True, timeout=120)
        cls.prefix = pathlib.Path(stage) / "usr"
        cls.libraries = next(cls.prefix.rglob("libvandrel-runtime.so")).parent

    def test_every_file_is_installed_and_no_other(self):
        self.assertEqual(sorted(installed_files(self.prefix)),
                         sorted(expected(self.libraries.relative_to(self.prefix))))

    def test_only_programs_may_be_executed_and_nobody_else_may_write(self):
        for path in (self.prefix / name for name in installed_files(self.prefix)):
            with self.subTest(path.name):
                mode = path.stat().st_mode
                self.assertFalse(mode & 0o022)
                is_program = path.parent == self.libraries or path.parent.name == "bin"
                self.assertTrue(is_program or not mode & 0o111)

    def test_libraries_are_looked_for_from_the_place_of_the_program_alone(self):
        programs = [self.prefix / "bin/vandrel", *self.libraries.iterdir()]
        for path in programs:
            with self.subTest(path.name):
                section = dynamic_section(path)
                self.assertNotIn("(RPATH)", section)
                for folder in re.findall(r"\(RUNPATH\).*\[(.*)\]", section):
                    self.assertRegex(folder, r"^\$ORIGIN(/[^:$]*)?$")

    def test_the_compressed_documents_can_be_read(self):
        for name in ("share/man/man1/vandrel.1.gz", "share/doc/vandrel/changelog.gz",
                     "share/doc/vandrel/changelog.Debian.gz"):
            with self.subTest(name), gzip.open(self.prefix / name, "rt", encoding="utf-8") as document:
                self.assertIn(version(), document.read())

    def test_the_package_the_program_and_its_documents_have_one_version(self):
        for file, pattern in (("CHANGELOG.md", r"^## (\d\S+)"), ("packaging/debian/changelog", r"^vandrel \(([^-]+)-\d+\)"),
                              ("packaging/vandrel.1", r'"Vandrel ([^"]+)"'),
                              (f"packaging/{NAME}.metainfo.xml", r'<release version="([^"]+)"')):
            with self.subTest(file):
                newest = re.search(pattern, (SOURCES / file).read_text("utf-8"), re.M)
                self.assertEqual(newest and newest[1], version())

    def test_a_tool_of_every_module_opens_with_what_is_installed(self):
        with Session() as session:
            suite = session.start(str(self.prefix / "bin/vandrel"))
            suite.click(suite.window(" ", holding="Continue").find(role="push button", name="Continue"))
            launcher = suite.window(" ", holding="My Computer")
            for (button, item), title in MODULES.values():
                suite.click(launcher.find(role="push button", name=button))
                suite.choose_in_menu(item)
                window = suite.window(title)
                if title != "EditMe!":
                    # It would lie in the launcher's way.
                    suite.close(window)
                    suite.await_no_window(title)
            self.check_what_is_loaded(suite)
            self.check_a_drawing(suite, window)

    def check_what_is_loaded(self, suite):
        """The suite's own libraries in the process are the installed ones, all of them, and no others."""
        maps = pathlib.Path(f"/proc/{suite.process.pid}/maps").read_text(encoding="utf-8")
        loaded = set(re.findall(r"\S+/(?:lib)?vandrel-\w+\.so", maps))
        self.assertEqual(loaded, {str(path) for path in self.libraries.glob("*.so")})

    def check_a_drawing(self, suite, editor):
        """A drawing is shown, which takes the program among the libraries."""
        shutil.copy(DRAWING, suite.home)
        suite.choose(editor, "File", "Open..")
        dialog = suite.window("Open")
        suite.focus(dialog.find(role="text", name="File name:"), times=3)
        suite.type(DRAWING.name)
        suite.keys("Return")
        suite.await_no_window("Open")
        suite.await_that(lambda: any("bits/pixel" in node.name for node in editor.all(role="label")),
                         "the drawing's size in the status bar")


if __name__ == "__main__":
    unittest.main()
