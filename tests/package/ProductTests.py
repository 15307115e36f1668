"""The product on a machine that has other programs under the names of the build's tools: it needs none of them. What it builds is the
library that was tested, byte by byte."""

import os
import shutil

from SecondBuild import SecondBuildTests

BROKEN = "#!/bin/sh\necho \"$0: broken\" >&2\nexit 1\n"
# LLVM 14's knows no /def where it makes a library.
OLD_LINKER = """#!/bin/sh
for word in "$@"; do
    case "$word" in
        /def:*) echo "lld-link: error: $word: no such file or directory" >&2; exit 1 ;;
        --version) echo "Debian LLD 14.0.6" ;;
    esac
done
"""
STAND_INS = {"lld-link": OLD_LINKER, "lld-link-19": BROKEN, "pandoc": BROKEN, "makensis": BROKEN, "python": BROKEN,
             "python3": BROKEN, "ccache": BROKEN}


class ProductTests(SecondBuildTests):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        folder = cls.copy.parent / "stand-ins"
        folder.mkdir()
        for name, text in STAND_INS.items():
            (folder / name).write_text(text)
            (folder / name).chmod(0o755)
        cls.environment["PATH"] = f"{folder}:{os.environ['PATH']}"
        if launcher := os.environ.get("CMAKE_CXX_COMPILER_LAUNCHER"):  # asked for, unlike a cache that is merely there
            cls.environment["CMAKE_CXX_COMPILER_LAUNCHER"] = shutil.which(launcher)
        cls.run_there("scripts/build", "product")

    def test_Library_BuiltBesideBrokenTools_Loads(self):
        self.addCleanup(self.run_there, "scripts/wine", "--stop")
        said = self.run_there("env", "DISPLAY=", "scripts/wine", "build/product/bin/oko-host.exe", "list")
        self.assertIn("OKO-Lab bold line Simulator", said)

    def test_Library_BuiltInAnotherFolder_IsByteForByteTheSame(self):
        self.assert_same_bytes("product", "bin/OkoLabBoldLine.dll", "debug/OkoLabBoldLine.dll.debug", "src/libOkoLabBoldLine.dll.a")
