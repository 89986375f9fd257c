"""Tests of what the site's build and documents.py find fault with."""

import pathlib
import tempfile
import unittest

import documents
from examples import Examples
from render import slug
from reference import Reference

COMPOUND = """<doxygen><compounddef kind="class" id="c"><compoundname>orvo::Radio</compoundname>
<detaileddescription><para>Thread-safe.</para></detaileddescription>
<location file="OrvoAPI/Radio.h" line="1"/><sectiondef>{}</sectiondef></compounddef></doxygen>"""
MEMBER = """<memberdef kind="function" id="m{0}" prot="public"><type>{1}</type><name>{2}</name>
<argsstring>({3})</argsstring>{4}<location file="OrvoAPI/Radio.h" line="{0}"/></memberdef>"""
PARAMETER = "<param><type>{}</type><declname>{}</declname></param>"


def reference(folder):
    members = [MEMBER.format(1, "Future&lt; int &gt;", "tune", "", ""),
               MEMBER.format(2, "void", "onAir", "", PARAMETER.format("F &amp;&amp;", "task")),
               MEMBER.format(3, "int", "volume", "", "")]
    pathlib.Path(folder, "c.xml").write_text(COMPOUND.format("".join(members)), encoding="utf-8")
    return Reference(folder)


class ExamplesTest(unittest.TestCase):
    def faults(self, source):
        with tempfile.TemporaryDirectory() as folder:
            pathlib.Path(folder, "examples").mkdir()
            pathlib.Path(folder, "examples/radio.cpp").write_text(source, encoding="utf-8")
            return Examples(folder).faults(reference(folder))

    def test_futures_and_callbacks_need_an_example_and_nothing_else_does(self):
        self.assertEqual(self.faults("// nothing\n"),
                         ["OrvoAPI/Radio.h: no example shows Radio::tune()",
                          "OrvoAPI/Radio.h: no example shows Radio::onAir(task)"])

    def test_one_example_may_show_several(self):
        self.assertEqual(self.faults("/// Shows Radio::tune();\n/// Radio::onAir(task).\n"
                                     "void f() {\n  radio.tune();\n  radio.onAir([] {});\n}\n"), [])

    def test_an_example_has_to_show_what_it_says(self):
        found = self.faults("/// Shows Radio::tune(); Radio::onAir(task); Radio::off().\n"
                            "void f() {\n  radio.tune();\n}\nvoid g() { radio.onAir(); }\n")
        self.assertEqual(len(found), 3)  # onAir is beyond the function, off too, and there is no off
        self.assertIn("examples/radio.cpp: there is no operation Radio::off()", found)


class DocumentsTest(unittest.TestCase):
    def test_says_what_became_of_a_document(self):
        whole = {"ok": {"title": "T", "items": [1], "status": {"code": "live", "ttl": 1}}}
        for member, after, said in (
                ("title", {"error": {"kind": "unableToParse", "key": "title"}},
                 "the document fails: `unableToParse` `title`"),
                ("title", {"ok": whole["ok"] | {"title": None}}, "no `title`"),
                ("items", {"ok": whole["ok"] | {"items": []}}, "`items` is empty"),
                ("items[].id", {"ok": whole["ok"] | {"items": []}}, "it is left out of `items`"),
                ("status", {"ok": whole["ok"] | {"status": {"code": "unknown", "ttl": 300}}},
                 "in `status`: `code` is `\"unknown\"`, `ttl` is `300`"),
                ("other", whole, documents.NOTHING)):
            self.assertEqual(documents.outcome(whole, after, member), said)

    def test_takes_members_away_where_they_are(self):
        document = {"items": [{"id": 1, "meta": {"total": 2}}, {"id": 3}]}
        self.assertEqual(list(documents.members(document)),
                         ["items", "items[].id", "items[].meta", "items[].meta.total"])
        self.assertEqual(documents.without(document, "items[].meta.total"),
                         {"items": [{"id": 1, "meta": {}}, {"id": 3}]})
        self.assertEqual(documents.without(document, "items", is_null=True), {"items": None})

    def test_a_row_covers_what_another_page_describes(self):
        rows = {"status": ("a [status](parts.md)", ""), "items": ("videos", "")}
        self.assertTrue(documents.covered("status.code", rows))
        self.assertFalse(documents.covered("items[].id", rows))


class SlugTest(unittest.TestCase):
    def test_anchors_are_those_of_the_repository_s_host(self):
        taken = set()
        self.assertEqual([slug(title, taken) for title in
                          ("GLib, GTK and Qt", "What went wrong, and what to do", "A `wait`", "A wait")],
                         ["glib-gtk-and-qt", "what-went-wrong-and-what-to-do", "a-wait", "a-wait-1"])


if __name__ == "__main__":
    unittest.main()
