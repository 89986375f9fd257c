#!/usr/bin/env python3
"""Tries check_layout.py on small trees that break one rule each."""

import pathlib
import tempfile
import unittest

from check_layout import Layout

GOOD = {
    "OrvoAPI/OrvoAPI.h": "#pragma once\n#include <OrvoAPI/Context/Client.h>\n"
                         "#include <OrvoAPI/Futures/Future.h>\n#include <OrvoAPI/Model/Video.h>\n"
                         "#include <OrvoAPI/Version.h>\n",
    "OrvoAPI/Version.h.in": "#pragma once\n",
    "OrvoAPI/Futures/Future.h": "#pragma once\n#include <vector>\n",
    "OrvoAPI/Platform/Session.cpp": "#include <curl/curl.h>\n",
    "OrvoAPI/Parsing/Reader.cpp": "#include <simdjson.h>\nint big = 1'000; // abort()\n",
    "OrvoAPI/Context/Client.h": "#pragma once\n",
    "OrvoAPI/Model/Video.h": "#pragma once\n#include <OrvoAPI/Futures/Future.h>\n"
                             "#include <OrvoAPI/Context/Client.h>\n",
    "OrvoAPI/Platform/WireInternal.h": "#pragma once\n#include <curl/curl.h>\n",
    "testing/OrvoAPI/Testing/Clock.h": "#pragma once\n",
    "tests/Model/VideoTest.cpp": "#include <OrvoAPI/OrvoAPI.h>\n#include <OrvoAPI/Testing/Clock.h>\n"
                                 "#include <gtest/gtest.h>\n",
}


def faults(changes):
    with tempfile.TemporaryDirectory() as folder:
        for name, text in (GOOD | changes).items():
            path = pathlib.Path(folder, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
        return Layout(folder).check()


class CheckLayout(unittest.TestCase):
    def expect(self, fault, changes):
        found = faults(changes)
        self.assertTrue(any(fault in line for line in found), f"{fault!r} is not among {found}")

    def test_a_good_tree_has_no_fault(self):
        self.assertEqual([], faults({}))

    def test_an_include_against_the_order(self):
        self.expect("stands after it in the order",
                    {"OrvoAPI/Futures/A.cpp": "#include <OrvoAPI/Model/Video.h>\n"})
        self.expect("stands after it in the order",
                    {"OrvoAPI/Context/Client.h": "#pragma once\n#include <OrvoAPI/Model/Video.h>\n"})
        self.expect("stands after it in the order",
                    {"OrvoAPI/Storage/AppStore.h": "#pragma once\n",
                     "OrvoAPI/Model/A.cpp": "#include <OrvoAPI/Storage/AppStore.h>\n"})

    def test_headers_in_a_ring(self):
        self.expect("include each other", {
            "OrvoAPI/Model/A.h": "#pragma once\n#include <OrvoAPI/Model/B.h>\n",
            "OrvoAPI/Model/B.h": "#pragma once\n  #  include <OrvoAPI/Model/A.h>\n"})

    def test_foreign_headers_out_of_place(self):
        rule = "allowed in Platform's sources only"
        self.expect(rule, {"OrvoAPI/Model/A.cpp": "#include <curl/curl.h>\n"})
        self.expect(rule, {"OrvoAPI/Platform/A.h": "#pragma once\n#include <sys/socket.h>\n"})
        self.expect("more than one source", {"OrvoAPI/Parsing/B.cpp": "#include <simdjson.h>\n"})
        self.expect("too heavy", {"OrvoAPI/Model/A.h": "#pragma once\n#include <regex>\n"})
        self.expect("quotation marks", {"OrvoAPI/Model/A.cpp": '#include "Video.h"\n'})

    def test_private_headers_shown(self):
        self.expect("includes the private", {
            "OrvoAPI/Platform/A.h": "#pragma once\n#include <OrvoAPI/Platform/WireInternal.h>\n"})
        self.expect("no installed header", {
            "tests/A/A.cpp": "#include <OrvoAPI/Platform/WireInternal.h>\n"})
        self.expect("no installed header", {"tool/main.cpp": '#include "../OrvoAPI/Model/X.h"\n'})
        self.expect("no header of the library", {
            "OrvoAPI/Model/A.cpp": "#include <OrvoAPI/Testing/Clock.h>\n"})

    def test_printing_and_stopping(self):
        rule = "must not call"
        self.expect(rule, {"OrvoAPI/Model/A.cpp": "void f() { std::abort(); }\n"})
        self.expect(rule, {"OrvoAPI/Model/A.cpp": "void f() { std::cerr << 1; }\n"})
        self.expect(rule, {"OrvoAPI/Model/A.cpp": 'void f() { /* x */ printf("y"); }\n'})

    def test_an_incomplete_umbrella(self):
        self.expect("Model/A.h is missing", {"OrvoAPI/Model/A.h": "#pragma once\n"})

    def test_a_strange_folder_and_a_bare_header(self):
        self.expect("no folder of the library", {"OrvoAPI/Util/A.h": "#pragma once\n"})
        self.expect("no #pragma once", {"OrvoAPI/Model/A.h": "\n"})


if __name__ == "__main__":
    unittest.main()
