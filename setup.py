"""Puts the library, the tool and the shared libraries that a plain system lacks into the wheel. CMAKE_ARGS adds options.

The shared libraries stay files of their own: most are under the LGPL, which lets users replace them.
"""

import os
import re
import shlex
import shutil
import subprocess
import tempfile
from pathlib import Path

from setuptools import Distribution, setup
from setuptools.command.build_py import build_py
from wheel.bdist_wheel import bdist_wheel

ROOT = Path(__file__).resolve().parent
# Of glibc and of GCC's runtime; Python itself needs the first, numpy both.
OF_THE_SYSTEM = re.compile(r"(linux-vdso|ld-linux.*|lib(c|m|dl|rt|pthread|gcc_s|stdc\+\+))\.so\.")
# Unlike RUNPATH, RPATH holds for what the needed libraries need, too.
LINK = "-Wl,--disable-new-dtags,-rpath,'$ORIGIN'"


def run(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout


def build(folder):
    """Builds library and tool, and returns their files."""
    options = [f"-DCMAKE_{kind}_LINKER_FLAGS={LINK}" for kind in ("EXE", "SHARED")]
    run("cmake", "-S", ROOT, "-B", folder, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release", "-DRT305_4_BUILD_TESTS=OFF",
        "-DRT305_4_WERROR=OFF", *options, *shlex.split(os.environ.get("CMAKE_ARGS", "")))
    run("cmake", "--build", folder, "--target", "rt305_4", "rt305")
    return [Path(folder, "host/rt305"), Path(folder, "src/plugin/libRT305_4.so.1")]


def libraries_of(file):
    """The shared libraries that a file needs and a plain system lacks."""
    found = re.findall(r"(\S+) => (/\S+)", run("ldd", file))
    return {name: Path(path) for name, path in found if not OF_THE_SYSTEM.match(name)}


def copy_licence(library, folder):
    """The licence of a library, where a Debian package has it."""
    if not shutil.which("dpkg-query"):
        return
    file = "*" + str(library.resolve()).removeprefix("/usr")
    owner = subprocess.run(["dpkg-query", "-S", file], stdout=subprocess.PIPE, text=True).stdout
    if owner:
        package = owner.split(":")[0]
        shutil.copyfile(f"/usr/share/doc/{package}/copyright", folder / f"{package}.txt")


class BuildWithTool(build_py):
    """Copies the built files beside the modules."""

    def run(self):
        super().run()
        native = Path(self.build_lib, "rt305_4", "native")
        licences = native / "licences"
        shutil.rmtree(native, ignore_errors=True)
        licences.mkdir(parents=True)
        with tempfile.TemporaryDirectory() as folder:
            for built in build(folder):
                shutil.copy(built.resolve(), native / built.name)
                run("strip", "--strip-unneeded", native / built.name)
                for name, library in libraries_of(built).items():
                    shutil.copyfile(library, native / name)
                    copy_licence(library, licences)


class PlatformWheel(bdist_wheel):
    """A wheel for one kind of machine and any Python 3."""

    def get_tag(self):
        return "py3", "none", super().get_tag()[2]


class PlatformDistribution(Distribution):
    def has_ext_modules(self):
        return True


version = re.search(r"^project\(\w+ VERSION (\S+)", (ROOT / "CMakeLists.txt").read_text(), re.M)[1]
setup(version=version, distclass=PlatformDistribution, cmdclass={"build_py": BuildWithTool, "bdist_wheel": PlatformWheel})
