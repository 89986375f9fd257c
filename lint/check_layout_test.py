#!/usr/bin/env python3
"""Tries check_layout.py on the sources with one file added or changed that breaks a rule."""

import pathlib
import unittest

from check_layout import Layout

BAD = [
    ("stands after it", "Futures/A.cpp", "#include <OrvoAPI/Model/Video.h>"),
    ("include each other", "Futures/Future.h", "  #  include <OrvoAPI/Futures/Future.h>"),
    ("sources of Base, HTTP, Platform, Queues only", "Model/A.cpp", "#include <curl/curl.h>"),
    ("is allowed in the sources", "Platform/A.h", "#include <sys/socket.h>"),
    ("is allowed in the sources", "Context/A.h", "#include <QObject>"),
    ("is allowed in the sources", "Integration/Qt.h", "#include <QWidget>"),
    ("stands after it", "Context/A.h", "#include <OrvoAPI/Integration/Qt.h>"),
    ("for those who ask", "OrvoAPI.h", "#include <OrvoAPI/Integration/GLib.h>"),
    ("more than one source", "Parsing/B.cpp", "#include <simdjson.h>"),
    ("too heavy", "Model/A.h", "#include <regex>"),
    ("quotation marks", "Model/A.cpp", '#include "Video.h"'),
    ("includes the private", "Queues/A.h", "#include <OrvoAPI/Queues/TimerInternal.h>"),
    ("stands after it", "Queues/A.cpp", "#include <OrvoAPI/HTTP/URL.h>"),
    ("is no interface", "OrvoAPI.h", "#include <OrvoAPI/Base/detail/Lock.h>"),
    ("no header of the library", "Model/A.cpp", "#include <OrvoAPI/Testing/Clock.h>"),
    ("must not call", "Model/A.cpp", "void f() { std::abort(); }"),
    ("must not call", "Model/A.cpp", 'void f() { /* x */ printf("y"); }'),
    ("Model/A.h is missing", "Model/A.h", "#pragma once"),
    ("no folder of the library", "Util/A.h", "#pragma once"),
    ("no #pragma once", "Model/A.h", ""),
    ("has 201 lines, where 200", "Model/A.h", "#pragma once" + "\n" * 200),
    ("has 401 lines, where 400", "Model/A.cpp", "\n" * 400),
    ("C::f has 41 lines, where 40", "Model/A.cpp",
     "int C::f(int a,\n         int b) {\n" + "  if (a) {\n    ++b;\n  }\n" * 12 + "\n\n}"),
    ("Future.h: needs no exception", "Futures/Future.h", "#pragma once"),
]


class CheckLayout(unittest.TestCase):
    def test_each_broken_rule_is_found(self):
        for fault, name, text in BAD:
            with self.subTest(name=name, text=text):
                layout = Layout(pathlib.Path(__file__).parents[1])
                layout.sources[name] = text + "\n"
                if name.endswith(".h"):
                    layout.headers.add(name)
                found = layout.check()
                self.assertTrue(any(fault in line for line in found), f"{fault}: {found}")


if __name__ == "__main__":
    unittest.main()
