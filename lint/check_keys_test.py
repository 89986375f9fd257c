#!/usr/bin/env python3
"""Tries check_keys.py on the sources with a key more, in each of their tables."""

import pathlib
import unittest

from check_keys import TABLE, library_sources, unread_keys


class CheckKeys(unittest.TestCase):
    def test_a_key_more_in_any_table_is_found(self):
        sources = library_sources(pathlib.Path(__file__).parents[1])
        tables = [(name, table) for name, text in sources.items() for table in TABLE.finditer(text)]
        self.assertGreater(len(tables), 20)
        for name, table in tables:
            at, text = table.start(3), sources[name]
            more = sources | {name: text[:at] + '"never_read", ' + text[at:]}
            self.assertEqual([fault.split('"')[1] for fault in unread_keys(more)], ["never_read"])


if __name__ == "__main__":
    unittest.main()
