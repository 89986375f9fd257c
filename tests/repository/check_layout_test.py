#!/usr/bin/env python3
"""Tries check_layout.py on small trees that break one rule each."""

import pathlib
import tempfile
import unittest

from check_layout import Layout

HEADER = "#pragma once\n"
GOOD = {
    "OrvoAPI/OrvoAPI.h": HEADER + "".join(f"#include <OrvoAPI/{name}.h>\n" for name in (
        "Context/Client", "Futures/Future", "Model/Video", "Version")),
    "OrvoAPI/Version.h.in": HEADER,
    "OrvoAPI/Futures/Future.h": HEADER + "#include <vector>\n",
    "OrvoAPI/Platform/Session.cpp": "#include <curl/curl.h>\n",
    "OrvoAPI/Parsing/Reader.cpp": "#include <simdjson.h>\nint big = 1'000; // abort()\n",
    "OrvoAPI/Context/Client.h": HEADER,
    "OrvoAPI/Model/Video.h": HEADER + "#include <OrvoAPI/Futures/Future.h>\n"
                                      "#include <OrvoAPI/Context/Client.h>\n",
    "OrvoAPI/Platform/WireInternal.h": HEADER + "#include <curl/curl.h>\n",
    "testing/OrvoAPI/Testing/Clock.h": HEADER,
    "tests/Model/VideoTest.cpp": "#include <OrvoAPI/OrvoAPI.h>\n#include <OrvoAPI/Testing/Clock.h>\n"
                                 "#include <gtest/gtest.h>\n",
}
BAD = [
    ("stands after it", "OrvoAPI/Futures/A.cpp", "#include <OrvoAPI/Model/Video.h>"),
    ("stands after it", "OrvoAPI/Context/Client.h", "#include <OrvoAPI/Model/Video.h>"),
    ("include each other", "OrvoAPI/Futures/Future.h", "  #  include <OrvoAPI/Futures/Future.h>"),
    ("Platform's sources only", "OrvoAPI/Model/A.cpp", "#include <curl/curl.h>"),
    ("Platform's sources only", "OrvoAPI/Platform/A.h", "#include <sys/socket.h>"),
    ("more than one source", "OrvoAPI/Parsing/B.cpp", "#include <simdjson.h>"),
    ("too heavy", "OrvoAPI/Model/A.h", "#include <regex>"),
    ("quotation marks", "OrvoAPI/Model/A.cpp", '#include "Video.h"'),
    ("includes the private", "OrvoAPI/Platform/A.h", "#include <OrvoAPI/Platform/WireInternal.h>"),
    ("no installed header", "tests/A/A.cpp", "#include <OrvoAPI/Platform/WireInternal.h>"),
    ("no installed header", "tool/main.cpp", '#include "../OrvoAPI/Model/X.h"'),
    ("no header of the library", "OrvoAPI/Model/A.cpp", "#include <OrvoAPI/Testing/Clock.h>"),
    ("must not call", "OrvoAPI/Model/A.cpp", "void f() { std::abort(); }"),
    ("must not call", "OrvoAPI/Model/A.cpp", "void f() { std::cerr << 1; }"),
    ("must not call", "OrvoAPI/Model/A.cpp", 'void f() { /* x */ printf("y"); }'),
    ("Model/A.h is missing", "OrvoAPI/Model/A.h", "#pragma once"),
    ("no folder of the library", "OrvoAPI/Util/A.h", "#pragma once"),
    ("no #pragma once", "OrvoAPI/Model/A.h", ""),
]


def faults(changes):
    with tempfile.TemporaryDirectory() as folder:
        for name, text in (GOOD | changes).items():
            path = pathlib.Path(folder, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
        return Layout(folder).check()


class CheckLayout(unittest.TestCase):
    def test_a_good_tree_has_no_fault(self):
        self.assertEqual([], faults({}))

    def test_each_broken_rule_is_found(self):
        for fault, name, text in BAD:
            with self.subTest(name=name, text=text):
                found = faults({name: text + "\n"})
                self.assertTrue(any(fault in line for line in found), f"{fault}: {found}")


if __name__ == "__main__":
    unittest.main()
