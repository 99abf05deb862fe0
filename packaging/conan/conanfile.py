# A Conan 2 recipe. It is untested, because Conan is not available where this tree is tested.
import os

from conan import ConanFile
from conan.errors import ConanInvalidConfiguration
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy


class TovaConan(ConanFile):
    name = "tova"
    version = "2.18.0"
    license = "BSL-1.0"
    description = "General foundation library for C++"
    package_type = "shared-library"
    settings = "os", "arch", "compiler", "build_type"

    def export_sources(self):
        tree = os.path.join(self.recipe_folder, "..", "..")
        for pattern in ("CMakeLists.txt", "LICENSE", "cmake/*", "include/*", "src/*", "tools/*"):
            copy(self, pattern, tree, self.export_sources_folder)

    def requirements(self):
        self.requires("boost/[>=1.74]")

    def validate(self):
        if self.settings.os != "Linux" or self.settings.arch not in ("x86_64", "armv8"):
            raise ConanInvalidConfiguration("tova needs 64-bit little-endian Linux")
        if self.settings.get_safe("compiler.libcxx") not in (None, "libstdc++11"):
            raise ConanInvalidConfiguration("tova needs libstdc++ with the C++11 strings")

    def layout(self):
        cmake_layout(self)

    def generate(self):
        toolchain = CMakeToolchain(self)
        for option in ("TESTS", "EXAMPLES", "TOOLS"):
            toolchain.cache_variables[f"TOVA_BUILD_{option}"] = False
        toolchain.generate()
        CMakeDeps(self).generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        copy(self, "LICENSE", self.source_folder, os.path.join(self.package_folder, "licenses"))

    def package_info(self):
        self.cpp_info.libs = ["tova"]
        self.cpp_info.set_property("cmake_file_name", "tova")
        self.cpp_info.set_property("cmake_target_name", "tova::tova")
        self.cpp_info.set_property("pkg_config_name", "tova")
