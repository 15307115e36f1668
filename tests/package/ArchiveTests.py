"""The ZIP: what is in it, that it is what was built, and that its programs run from there."""

import binascii
import re
import unittest
import zipfile

from Package import ARCHIVE, BUILD, NAME, SOURCE, VERSION, Unzipped, files, run, wine


def setUpModule():
    global package
    package = Unzipped()
    unittest.addModuleCleanup(package.close)


def sections(library):
    """The sections of a PE file, by name: those that are longer than eight letters stand in the string table."""
    data = library.read_bytes()
    number = lambda at, size: int.from_bytes(data[at:at + size], "little")
    header = number(0x3C, 4)
    strings = number(header + 12, 4) + 18 * number(header + 16, 4)
    table = header + 24 + number(header + 20, 2)
    found = {}
    for at in range(table, table + 40 * number(header + 6, 2), 40):
        name = data[at:at + 8].rstrip(b"\0").decode()
        if name.startswith("/"):
            begin = strings + int(name[1:])
            name = data[begin:data.index(b"\0", begin)].decode()
        size, begin = number(at + 16, 4), number(at + 20, 4)
        found[name] = data[begin:begin + size]
    return found


class ArchiveTests(unittest.TestCase):
    def test_Archive_HasOneFolderNamedWithTheVersion(self):
        with zipfile.ZipFile(ARCHIVE) as archive:
            self.assertEqual({name.split("/")[0] for name in archive.namelist()}, {NAME})

    def test_Archive_HasWhatAUserAndAHostsProgrammerNeed(self):
        scenarios = [path.name for path in (SOURCE / "tools/emulator/scenarios").iterdir()]
        headers = [path.name for path in (SOURCE / "include/oko").iterdir()]
        pages = [path.stem for path in (SOURCE / "docs").glob("*.md")]
        self.assertGreater(min(len(scenarios), len(headers), len(pages)), 3)
        expected = {
            "README.html", "CHANGELOG.html", *(f"docs/{page}.html" for page in pages),
            "bin/OkoLabBoldLine.dll", "bin/oko-host.exe", "bin/oko-control-emulator.exe",
            *(f"bin/scenarios/{scenario}" for scenario in scenarios),
            "debug/OkoLabBoldLine.dll.debug", "examples/minimal_host/CMakeLists.txt",
            *(f"include/oko/{header}" for header in headers),
            "examples/minimal_host/MinimalHost.cpp",
            "lib/libOkoLabBoldLine.dll.a", "lib/OkoLabBoldLine.lib",
            "lib/cmake/OkoLabBoldLine/OkoLabBoldLineConfig.cmake",
            "lib/cmake/OkoLabBoldLine/OkoLabBoldLineConfigVersion.cmake",
            "lib/cmake/OkoLabBoldLine/OkoLabBoldLineTargets.cmake",
            *(f"licenses/{name}.txt" for name in ("gcc", "mingw-w64", "cli11", "nlohmann-json", "boost", "dygraphs",
                                                       "nsis")),
        }
        self.assertEqual(expected - set(files(package.folder)), set())

    def test_Archive_HasNoTestAndNoBenchmark(self):
        programs = [name for name in files(package.folder) if name.endswith((".exe", ".dll"))]
        self.assertEqual(programs, ["bin/OkoLabBoldLine.dll", "bin/oko-control-emulator.exe", "bin/oko-host.exe"])

    def test_Programs_AreTheOnesThatWereTested(self):
        for name in ("OkoLabBoldLine.dll", "oko-host.exe", "oko-control-emulator.exe"):
            with self.subTest(name):
                self.assertEqual((package.folder / "bin" / name).read_bytes(), (BUILD / "bin" / name).read_bytes())

    def test_Programs_NameNoFolderOfTheBuild(self):
        for path in (*package.folder.glob("bin/*.*"), *package.folder.glob("lib/*.*"), *package.folder.glob("debug/*")):
            with self.subTest(path.name):
                self.assertNotIn(str(SOURCE).encode(), path.read_bytes())

    def test_Library_NamesItsDebugFileAndThatFileFits(self):
        link = sections(package.folder / "bin/OkoLabBoldLine.dll")[".gnu_debuglink"]
        name = link[:link.index(b"\0")].decode()
        at = (len(name) + 4) & ~3
        checksum = int.from_bytes(link[at:at + 4], "little")
        self.assertEqual(name, "OkoLabBoldLine.dll.debug")
        self.assertEqual(checksum, binascii.crc32((package.folder / "debug" / name).read_bytes()))

    def test_DebugFile_KnowsTheSourceOfAnExport(self):
        debug = package.folder / "debug/OkoLabBoldLine.dll.debug"
        symbols = run("x86_64-w64-mingw32-nm", debug)
        address = re.search(r"^([0-9a-f]+) T LibQueryInterface$", symbols, re.MULTILINE).group(1)
        place = run("x86_64-w64-mingw32-addr2line", "-e", debug, address)
        self.assertRegex(place, r"src/core/Exports\.cpp:\d+")

    def test_Library_GuardsItsStacks(self):
        symbols = run("x86_64-w64-mingw32-nm", package.folder / "debug/OkoLabBoldLine.dll.debug")
        failure = re.search(r"^0*([0-9a-f]+) T __stack_chk_fail$", symbols, re.MULTILINE).group(1)
        code = run("x86_64-w64-mingw32-objdump", "--disassemble", package.folder / "bin/OkoLabBoldLine.dll")
        # Without a guard in every function that has an array there would be the few of the run-time, or none.
        self.assertGreater(len(re.findall(rf"call\s+0x{failure}\b", code)), 50)

    def test_Notices_HoldTheTermsOfEachPart(self):
        for name, words in {
            "gcc": "GCC RUNTIME LIBRARY EXCEPTION", "mingw-w64": "winpthreads", "cli11": "University of Cincinnati",
            "nlohmann-json": "Niels Lohmann", "boost": "Boost Software License", "dygraphs": "Dan Vanderkam",
            "nsis": "NSIS Contributors",
        }.items():
            with self.subTest(name):
                self.assertIn(words, (package.folder / "licenses" / f"{name}.txt").read_text())

    def test_Host_ShowsTheSimulatorFromTheUnzippedFolder(self):
        host = package.folder / "bin/oko-host.exe"
        self.assertIn("OKO-Lab bold line Simulator", wine(host, "list"))
        self.assertIn("H301-T", wine(host, "monitor", "--device", "simulator", "--rows", "1"))

    def test_Programs_AnswerWithTheVersion(self):
        for name in ("oko-host", "oko-control-emulator"):
            self.assertEqual(wine(package.folder / f"bin/{name}.exe", "--version").strip(), f"{name} {VERSION}")

    def test_Emulator_ReadsAScenarioOfThePackage(self):
        said = wine(package.folder / "bin/oko-control-emulator.exe", "--scenario", "scenarios/product-9.json",
                    "--port", "61234", "--for", "0.1", cwd=package.folder / "bin")
        self.assertIn("answering on 127.0.0.1:61234", said)
