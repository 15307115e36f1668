"""The same sources give the same bytes: a second build of what the package runs. The library alone is compared more often, in
ProductTests."""

from SecondBuild import SecondBuildTests


class ReproducibilityTests(SecondBuildTests):
    def test_Programs_BuiltInAnotherFolder_AreByteForByteTheSame(self):
        self.run_there("cmake", "--preset", "windows-x64")
        self.run_there("cmake", "--build", "--preset", "windows-x64", "--target", "oko-host", "oko-control-emulator")
        self.assert_same_bytes("windows-x64", "bin/oko-host.exe", "bin/oko-control-emulator.exe")
