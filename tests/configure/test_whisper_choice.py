"""Which library of Whisper's the configuration takes: test_whisper_choice.py runs CMake on a project that has
nothing but cmake/Whisper.cmake, with installed libraries that are made up. Git never reaches a server."""

import pathlib
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PROJECT = f"""cmake_minimum_required(VERSION 3.25)
project(choice LANGUAGES CXX)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${{CMAKE_BINARY_DIR}}/bin")
include(GNUInstallDirs)
find_package(PkgConfig REQUIRED)
include({ROOT}/cmake/Whisper.cmake)
message(STATUS "modules '${{QUILLBACK_GGML_MODULES}}', ${{QUILLBACK_WHISPER_CODE}}")
"""
PROGRAM = """
add_executable(program program.cpp)
target_link_libraries(program PRIVATE quillback_whisper_library)
set_target_properties(program PROPERTIES INSTALL_RPATH_USE_LINK_PATH ON)
install(TARGETS program)
"""
PC = """libdir={folder}/lib
Name: {name}
Description: made up
Version: {version}
Libs: -L${{libdir}} -l{name}
"""


class WhisperChoice(unittest.TestCase):
    """Configurations with an installed library, or without."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="whisper-choice-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.prefix = self.folder / "prefix"
        self.project = self.folder / "project"
        self.project.mkdir()
        (self.project / "CMakeLists.txt").write_text(PROJECT)

    def install(self, version, names=("whisper", "parakeet")):
        """Makes up an installed library; returns its folder."""
        libraries = self.prefix / "lib"
        (libraries / "pkgconfig").mkdir(parents=True)
        for name in names:
            self.make(libraries / f"lib{name}.so")
            (libraries / f"pkgconfig/{name}.pc").write_text(
                PC.format(folder=self.prefix, name=name, version=version))
        return libraries

    def make(self, path):
        """An empty file that may be a library."""
        path.parent.mkdir(parents=True, exist_ok=True)
        path.touch()

    def configure(self, choice, *options):
        """The exit status, and what is said about Whisper."""
        done = subprocess.run(
            ["cmake", "-G", "Ninja", "-S", self.project, "-B", self.project / "build",
             f"-DVOXTREL_WHISPER={choice}", f"-DCMAKE_PREFIX_PATH={self.prefix}",
             "-DGIT_EXECUTABLE=/bin/false", *options],
            text=True, capture_output=True, check=False, timeout=60)
        said = " ".join(line.strip() for line in (done.stdout + done.stderr).splitlines())
        return done.returncode, said

    def test_an_installed_library_is_used(self):
        self.install("1.9.5")
        status, said = self.configure("system")
        self.assertEqual(status, 0, said)
        self.assertIn("Whisper: installed, 1.9.5", said)

    def test_one_that_has_its_code_within_needs_no_modules(self):
        libraries = self.install("1.9.3")
        for name in ("ggml", "ggml-base", "ggml-cpu"):
            self.make(libraries / f"lib{name}.so.0")
            (libraries / f"lib{name}.so").symlink_to(f"lib{name}.so.0")
        status, said = self.configure("system")
        self.assertEqual(status, 0, said)
        self.assertIn("modules '', code as installed", said)

    def compile(self, name, source, *needed):
        """A real library, which finds those that it needs by the linker's path only."""
        folder = self.prefix / "lib"
        file = folder / f"lib{name}.so.0"
        subprocess.run(["cc", "-shared", "-fPIC", "-xc", "-", "-o", file, f"-Wl,-soname,{file.name}",
                        f"-L{folder}", *(f"-l{other}" for other in needed)],
                       input=source, text=True, check=True)
        (folder / f"lib{name}.so").unlink(missing_ok=True)
        (folder / f"lib{name}.so").symlink_to(file.name)

    def test_a_program_finds_it_and_what_it_needs_outside_the_linkers_path(self):
        self.install("1.9.3")
        self.compile("ggml-cpu", "int compute(void) { return 7; }")
        self.compile("whisper", "int compute(void); int whisper(void) { return compute(); }", "ggml-cpu")
        self.compile("parakeet", "int parakeet(void) { return 0; }")
        (self.project / "CMakeLists.txt").write_text(PROJECT + PROGRAM)
        (self.project / "program.cpp").write_text(
            'extern "C" int whisper(); int main() { return whisper(); }')
        status, said = self.configure("system", f"-DCMAKE_INSTALL_PREFIX={self.folder}/installed")
        self.assertEqual(status, 0, said)
        for words in (["--build"], ["--install"]):
            subprocess.run(["cmake", *words, self.project / "build"], check=True, stdout=subprocess.DEVNULL)
        for program in ("project/build/bin/program", "installed/bin/program"):
            done = subprocess.run([self.folder / program], text=True, capture_output=True, check=False)
            self.assertEqual(done.returncode, 7, done)

    def test_one_that_is_too_old_is_not_used(self):
        self.install("1.9.1")
        status, said = self.configure("auto")
        self.assertEqual(status, 0, said)
        self.assertIn("1.9.1 is older than 1.9.2 and not used", said)
        self.assertIn("built without it", said)
        status, said = self.configure("system")
        self.assertNotEqual(status, 0)
        self.assertIn("no whisper.cpp 1.9.2 or later is installed", said)

    def test_one_without_the_second_library_is_not_used(self):
        self.install("1.9.5", names=("whisper",))
        self.assertIn("comes without libparakeet and is not used", self.configure("auto")[1])

    def test_its_modules_are_found_wherever_it_may_have_them(self):
        libraries = self.install("1.9.5")
        for folder in (libraries / "ggml/backends0", self.prefix / "bin"):
            module = folder / "libggml-cpu-haswell.so"
            self.make(module)
            self.assertIn(f"installed, 1.9.5 {folder}", self.configure("system")[1])
            module.unlink()
        elsewhere = self.folder / "elsewhere"
        self.make(elsewhere / "libggml-cpu-x64.so")
        said = self.configure("system", f"-DVOXTREL_GGML_MODULES={elsewhere}")[1]
        self.assertIn(f"installed, 1.9.5 {elsewhere}", said)

    def test_without_library_and_network_one_line_says_so(self):
        status, said = self.configure("auto")
        self.assertEqual(status, 0, said)
        self.assertIn("neither installed nor can it be fetched; built without it", said)
        self.assertNotEqual(self.configure("fetch")[0], 0)
        self.assertNotEqual(self.configure("system")[0], 0)

    def test_it_can_be_left_out(self):
        self.install("1.9.5")
        status, said = self.configure("off")
        self.assertEqual(status, 0, said)
        self.assertNotIn("installed", said)


if __name__ == "__main__":
    unittest.main()
