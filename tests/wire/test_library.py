"""What is built: the libraries' exports, and assertions in every build."""

import json
import os
import re
import subprocess
import unittest
from pathlib import Path

SOURCE = Path(os.environ["SOURCE"])
BUILD = Path(os.environ["BUILD"])


def exports(library):
    listed = subprocess.run(["nm", "-DC", "--defined-only", library], capture_output=True, text=True, check=True).stdout
    return sorted(line.split(maxsplit=2)[2] for line in listed.splitlines())


class Library(unittest.TestCase):
    def test_exports_its_two_functions_and_nothing_else(self):
        self.assertEqual(exports(os.environ["LIBRARY"]), ["ShutdownVarloAnalyticsApi", "StartVarloAnalyticsApi"])

    def test_the_platform_exports_nothing_of_the_libraries_that_it_holds(self):
        own = re.compile(r"(non-virtual thunk to |typeinfo for |typeinfo name for |vtable for )?(analytics|tarno::osa)::")
        names = exports(os.environ["PLATFORM"])
        self.assertIn("vtable for analytics::ClientFault", names)
        self.assertEqual([name for name in names if not own.match(name)], [])

    def test_links_the_platform_dynamically(self):
        listed = subprocess.run(["readelf", "-d", os.environ["LIBRARY"]], capture_output=True, text=True,
                                check=True).stdout
        self.assertIn("Shared library: [libvarlo-analytics-platform.so", listed)
        for foreign in ("libxml2", "libsqlite3", "libSQLiteCpp"):
            self.assertNotIn(foreign, listed)


class Assertions(unittest.TestCase):
    def test_no_command_of_this_build_defines_ndebug(self):
        commands = json.loads((BUILD / "compile_commands.json").read_text())
        self.assertGreater(len(commands), 10)
        for entry in commands:
            self.assertNotIn("-DNDEBUG", entry["command"], entry["file"])

    def test_no_preset_and_no_build_type_defines_it(self):
        self.assertNotIn("NDEBUG", (SOURCE / "CMakePresets.json").read_text())
        presets = json.loads((SOURCE / "CMakePresets.json").read_text())["configurePresets"]
        types = {p["cacheVariables"]["CMAKE_BUILD_TYPE"] for p in presets
                 if "CMAKE_BUILD_TYPE" in p.get("cacheVariables", {})}
        removed = re.search(r"foreach\(config (.*?)\)", (SOURCE / "cmake/BuildSettings.cmake").read_text()).group(1)
        self.assertLessEqual({t.upper() for t in types} - {"NONE"}, set(removed.split()))


if __name__ == "__main__":
    unittest.main()
