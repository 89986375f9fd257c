#!/usr/bin/python3
"""Makes the site of the Markdown in docs/ and of what Doxygen has read from the headers.

Usage: make_site.py ROOT XML OUTPUT VERSION; prints one line per fault (a link that leads nowhere, a
heading that skips a level, an operation without an example), exit status 1 when there is one.
"""

import html
import json
import pathlib
import posixpath
import re
import shutil
import sys

import examples
from reference import Reference, escape, text_of
from render import Page, code_block, doc_html, signature

HERE = pathlib.Path(__file__).parent
REFERENCE_GROUPS = {
    "Context": "The root object and its fetches", "Futures": "Futures, results and errors",
    "Queues": "Queues", "Model": "Content", "Configuration": "The configuration",
    "Linear": "Live television", "Network": "Sessions and the network", "HTTP": "HTTP",
    "Storage": "Caches", "Parsing": "Documents", "Logging": "Logging", "Platform": "The system",
    "Base": "Basics", "Integration": "Other libraries' loops", "Testing": "The test kit",
    "": "The version, and all at once",
}

EXAMPLE_HEADER = "examples/operations/Example.h"
REFERENCE_RULES = """<p>All of it is in namespace <code>orvo</code>. What holds where a comment says nothing else:</p>
<ul>
<li><strong>Threads.</strong> A record (a <code>struct</code> with public members) is a value: as with the
standard containers, several threads may read one that none changes. Parsers have no state. A class says
what holds for it.</li>
<li><strong>Ownership.</strong> A value owns what it holds. What a function returns as a reference or a view
belongs to the object that it was called on. Interfaces that the app implements are held by shared
pointers.</li>
<li><strong>Errors.</strong> Nothing is thrown but <code>std::bad_alloc</code>, unless the comment names it;
failures are delivered by a <code>Result</code> or a <code>Future</code>.</li>
<li><strong>Examples.</strong> What they share (<code>App</code>, <code>Outcome</code>, <code>show</code>,
<code>mainQueue</code>) stands in <a href="../source/examples/operations/Example.h.html">Example.h</a>; all of
them are built and run with the tests.</li>
</ul>
"""


class Site:
    def __init__(self, root, xml, output, version):
        self.root, self.output, self.version = root, output, version
        self.reference = Reference(xml)
        self.faults, self.written, self.search = [], {}, []
        self.needed_sources, self.anchors, self.header_lines = {EXAMPLE_HEADER}, set(), {}
        self.contents = self.read_contents()
        self.places = self.reference_places()
        self.names = self.known_names()
        self.examples = examples.Examples(root)
        self.check_comments()
        self.faults += self.examples.faults(self.reference)

    # What there is, and where.

    def read_contents(self):
        """The headings with their pages, as paths below docs/."""
        docs = self.root / "docs"
        sections, taken = [], set()
        for line in (HERE / "contents").read_text(encoding="utf-8").splitlines():
            if not line.strip() or line.startswith("#"):
                continue
            if not line.startswith(" "):
                sections.append((line, []))
                continue
            pattern = line.strip()
            found = sorted(path.relative_to(docs).as_posix() for path in docs.glob(pattern))
            if not found:
                self.faults.append(f"docs/site/contents: there is no {pattern}")
            sections[-1][1].extend(name for name in found if name not in taken)
            taken.update(found)
        rest = sorted(path.relative_to(docs).as_posix() for path in docs.rglob("*.md"))
        rest = [name for name in rest if name not in taken]
        return sections + ([("More", rest)] if rest else [])

    def headers(self):
        return sorted({each.file for each in [*self.reference.types, *self.reference.free]})

    @staticmethod
    def header_page(file):
        return "reference/" + file.removeprefix("OrvoAPI/").removesuffix(".h") + ".html"

    @staticmethod
    def anchor(name):
        return re.sub(r"[^\w]+", "-", name).strip("-")

    def reference_places(self):
        """From Doxygen's identifiers to addresses."""
        places = {}
        for found in self.reference.types:
            places[found.id] = f"{self.header_page(found.file)}#{self.anchor(found.name)}"
        for each in self.reference.members():
            # What is not documented by itself, such as most operators, has its header's page.
            place = "" if re.match(r"~|operator\W", each.name) else f"#{self.anchor(each.qualified)}"
            places[each.id] = self.header_page(each.file) + place
        return places

    def known_names(self):
        """What code in a text links to: types, and members by their type's name."""
        names, short = {}, {}
        for found in self.reference.types:
            names[found.name] = self.places[found.id]
            short.setdefault(found.name.split("::")[-1], set()).add(self.places[found.id])
        for each in self.reference.members():
            names.setdefault(each.qualified, self.places[each.id])
        for name, places in short.items():
            if len(places) == 1:
                names.setdefault(name, *places)
        return names

    def check_comments(self):
        """Each type has a comment, and a class says in it what holds for threads."""
        kinds = [each for each in self.reference.members() if each.kind == "enum"]
        for each in [*self.reference.types, *kinds]:
            said = " ".join(text_of(each.doc).split())
            if not said:
                self.faults.append(f"{each.file}: {each.name} has no comment")
            elif each.kind == "class" and "::" not in each.name and not re.search(
                    r"[Tt]hread|[Vv]alue\b|queue", said):
                self.faults.append(f"{each.file}: {each.name} does not say whether it is thread-safe")

    # Links.

    def relative(self, target, page):
        path, _, anchor = target.partition("#")
        relative = posixpath.relpath(path, posixpath.dirname(page) or ".")
        return relative + (f"#{anchor}" if anchor else "")

    def code_linker(self, page, not_to=()):
        def link(words):
            name = re.sub(r"\(.*\)$", "", words).removeprefix("orvo::").removesuffix("{}")
            name = name.split("<")[0] if re.fullmatch(r"\w+<.*>", name) else name
            header = re.fullmatch(r"<?(?:OrvoAPI/)?(\w+/\w+\.h|OrvoAPI\.h)>?", words)
            if header and f"OrvoAPI/{header.group(1)}" in self.headers():
                return self.relative(self.header_page(f"OrvoAPI/{header.group(1)}"), page)
            target = self.names.get(name)
            if "::" not in name and name[:1].islower() and "(" not in words:
                return None  # a word such as "name", which is a function's too
            if not target or target in not_to or target.split("#")[0] == page:
                return None
            return self.relative(target, page)
        return link

    def id_linker(self, page):
        return lambda refid: (self.relative(self.places[refid], page)
                              if refid in self.places else None)

    def resolver(self, document, page):
        """From a link in a document of the repository to one in the site."""
        def resolve(target):
            if re.match(r"[a-z]+:", target):
                return target
            path, _, anchor = target.partition("#")
            if not path:
                return target
            file = posixpath.normpath(posixpath.join(posixpath.dirname(document), path))
            found = self.site_path(file, wants_source=document == "docs/design.md")
            if found is None:
                self.faults.append(f"{document}: {target} leads nowhere")
                return target
            return self.relative(found + (f"#{anchor}" if anchor else ""), page)
        return resolve

    def site_path(self, file, wants_source=False):
        """Where a file of the repository is; a header's own text has more than its reference."""
        if file.startswith("docs/") and file.endswith(".md"):
            return file.removeprefix("docs/").removesuffix(".md") + ".html"
        if file.startswith("docs/images/") and (self.root / file).is_file():
            return file.removeprefix("docs/")
        if file in self.headers() and not wants_source:
            return self.header_page(file)
        if not (self.root / file).exists():
            return None
        self.needed_sources.add(file)
        return f"source/{file}.html"

    # Pages.

    def write(self, page, title, body, current=None):
        menu = []
        for heading, documents in self.contents:
            menu.append(f"<h2>{escape(heading)}</h2><ul>")
            for document in documents:
                target = self.site_path(f"docs/{document}")
                menu.append(self.menu_item(target, self.titles[document], page))
            menu.append("</ul>")
        menu.append("<h2>Reference</h2><ul>")
        menu.append(self.menu_item("reference/index.html", "Types and operations", page))
        menu.append(self.menu_item("all.html", "Everything, A to Z", page))
        menu.append("</ul>")
        text = (HERE / "page.html").read_text(encoding="utf-8")
        up = "../" * page.count("/")
        for name, value in {"title": escape(title), "up": up, "menu": "\n".join(menu),
                            "version": self.version, "body": body}.items():
            text = text.replace("{{" + name + "}}", value)
        self.written[page] = text

    def menu_item(self, target, title, page):
        here = ' aria-current="page"' if target == page else ""
        return f'<li><a href="{self.relative(target, page)}"{here}>{escape(title)}</a></li>'

    def read_documents(self):
        documents = [name for _, names in self.contents for name in names]
        self.pages = {}
        for name in documents:
            page = self.site_path(f"docs/{name}")
            text = (self.root / "docs" / name).read_text(encoding="utf-8")
            self.pages[name] = (page, Page(
                text, self.resolver(f"docs/{name}", page), self.code_linker(page),
                lambda source, page=page: self.source_link(source, page)), text)
        self.titles = {name: found.title for name, (_, found, _) in self.pages.items()}

    def source_link(self, source, page):
        found = self.site_path(source)
        if found is None:
            return escape(source)
        return f'<a href="{self.relative(found, page)}">{escape(source)}</a>'

    def write_documents(self):
        for name, (page, found, text) in self.pages.items():
            level = 0
            for step, title, _ in found.headings:
                if step > level + 1:
                    self.faults.append(f"docs/{name}: the heading \"{title}\" skips a level")
                level = step
            if sum(step == 1 for step, _, _ in found.headings) != 1:
                self.faults.append(f"docs/{name}: needs one heading of the first level")
            self.write(page, found.title, found.body)
            self.index_sections(page, found, text)

    def index_sections(self, page, found, text):
        parts = re.split(r"^#+ .*$", re.sub(r"^```.*?^```$", "", text, flags=re.M | re.S), flags=re.M)
        for (_, title, anchor), part in zip(found.headings, parts[1:]):
            words = re.sub(r"\]\([^)]*\)|[`*\[\]|]", "", part)
            where = found.title if title != found.title else ""
            self.search.append([title, f"{page}#{anchor}", where, " ".join(words.split())[:600]])

    # The reference.

    def example_html(self, each, page):
        found = self.examples.of(each.key)
        if found is None:
            return ""
        file, code = found
        return (f'<details class="example"><summary>Example<span class="note"> for '
                f"{escape(each.qualified)}</span></summary>"
                f"{code_block(code, 'cpp', self.source_link(file, page))}</details>\n")

    def new_anchor(self, each, page):
        anchor, count = self.anchor(each.qualified), 1
        while (page, anchor) in self.anchors:  # overloads with comments of their own
            count += 1
            anchor = f"{self.anchor(each.qualified)}-{count}"
        self.anchors.add((page, anchor))
        return anchor

    def group_html(self, group, page, level):
        """Declarations that share a comment, as overloads do."""
        first = group[0]
        link, codes = self.code_linker(page), []
        for each in group:
            codes.append(signature(each, self.id_linker(page)))
        doc = doc_html(first.doc, link)
        if first.kind == "enum":
            rows = "".join(f"<li><code>{escape(name)}</code>{self.after(value, link)}</li>"
                           for name, value in first.values)
            doc += f"<ul>{rows}</ul>"
        shown, used = "", set()
        for each in group:
            found = self.examples.of(each.key) if self.reference.is_operation(each) else None
            if found and found not in used:
                used.add(found)
                shown += self.example_html(each, page)
        code = "".join(f"<code>{code}</code>" for code in codes)
        title = "Constructor" if first.name == first.owner.split("::")[-1] else first.name
        anchor = self.new_anchor(first, page)
        words = " ".join(text_of(first.doc).split())
        self.search.append([first.qualified, f"{page}#{anchor}", first.file, words[:300]])
        return (f'<div class="member"><h{level} id="{anchor}">'
                f"{escape(title)}</h{level}>"
                f'<figure class="code signature"><pre tabindex="0">{code}</pre></figure>'
                f'<div class="doc">{doc}{shown}</div></div>\n')

    @staticmethod
    def after(doc, link):
        shown = doc_html(doc, link)
        return re.sub(r"^<p>", ": ", shown).replace("</p>\n", "") if shown else ""

    def fields_html(self, fields, page):
        """The data members of a record, as a list."""
        rows, link = [], self.code_linker(page)
        for each in fields:
            example = self.example_html(each, page) if self.reference.is_operation(each) else ""
            anchor = self.new_anchor(each, page)
            self.search.append([each.qualified, f"{page}#{anchor}", each.file,
                                " ".join(text_of(each.doc).split())[:300]])
            rows.append(f'<dt id="{anchor}"><code>'
                        f"{signature(each, self.id_linker(page))}</code></dt>"
                        f"<dd>{doc_html(each.doc, link)}{example}</dd>\n")
        return f"<dl>{''.join(rows)}</dl>\n"

    def remark_above(self, each):
        """What a header says of the members that follow: a comment of its own after a blank line."""
        if each.name == each.owner.split("::")[-1]:
            return ""  # why a constructor is as it is
        lines, found = self.lines_of(each.file), []
        at = each.line - 2
        while at >= 0 and re.match(r"\s*(///|template|requires)", lines[at]):
            at -= 1
        while at >= 0 and re.match(r"  // ", lines[at]) and "NOLINT" not in lines[at]:
            found.insert(0, lines[at].strip().removeprefix("// "))
            at -= 1
        is_heading = at >= 0 and (not lines[at].strip() or lines[at].strip() == "public:")
        return " ".join(found) if found and is_heading else ""

    def lines_of(self, file):
        if file not in self.header_lines:
            path = self.root / file
            path = path if path.is_file() else self.root / "testing" / file
            self.header_lines[file] = path.read_text(encoding="utf-8").splitlines()
        return self.header_lines[file]

    def members_html(self, members, page, level):
        out, fields, at = [], [], 0
        while at < len(members):
            group = [members[at]]
            at += 1
            remark = self.remark_above(group[0])
            if fields and remark:
                out.append(self.fields_html(fields, page))
                fields = []
            if remark:
                out.append(f"<p>{escape(remark)}</p>\n")
            is_bare = not text_of(group[0].doc).strip() and not self.reference.is_operation(group[0])
            if is_bare and re.match(r"~|operator\W", group[0].name):
                continue
            if group[0].kind == "variable" or is_bare and group[0].kind != "enum":
                fields.append(group[0])
                continue
            if fields:
                out.append(self.fields_html(fields, page))
                fields = []
            while (at < len(members) and members[at].name == group[0].name
                   and members[at].kind == group[0].kind and not text_of(members[at].doc).strip()):
                group.append(members[at])
                at += 1
            out.append(self.group_html(group, page, level))
        return "".join(out) + (self.fields_html(fields, page) if fields else "")

    def type_html(self, found, page):
        link = self.code_linker(page)
        bases = ""
        public = [base for base in found.bases if base and "detail::" not in base
                  and "enable_shared_from_this" not in base]
        if public:
            bases = ('<p class="note">Is a ' + ", ".join(
                f'<a href="{link(base)}">{escape(base)}</a>' if link(base) else escape(base)
                for base in public) + "</p>")
        definition = ""
        if found.definition is not None:
            definition = code_block(text_of(found.definition).replace("orvo::", ""), "cpp")
        self.search.append([found.name, f"{page}#{self.anchor(found.name)}", found.file,
                            " ".join(text_of(found.doc).split())[:400]])
        self.anchors.add((page, self.anchor(found.name)))
        return (f'<section><h2 id="{self.anchor(found.name)}">{escape(found.name)}</h2>\n{bases}'
                f"{definition}{doc_html(found.doc, link)}"
                f"{self.members_html(found.members, page, 3)}</section>\n")

    def write_reference(self):
        for file in self.headers():
            page = self.header_page(file)
            short = file.removeprefix("OrvoAPI/")
            free = [each for each in self.reference.free if each.file == file]
            body = [f"<h1>{escape(short)}</h1>\n",
                    code_block(f"#include <{file}>", "cpp", self.source_of(file, page))]
            for found in self.reference.types:
                if found.file == file:
                    body.append(self.type_html(found, page))
            if free:
                body.append("<section><h2>Free declarations</h2>" if len(body) > 2 else "<section>"
                            '<h2>Declarations</h2>')
                body.append(self.members_html(free, page, 3) + "</section>")
            body.insert(2, self.on_this_page("".join(body)))
            self.write(page, short, "".join(body))
        self.write_reference_index()

    @staticmethod
    def on_this_page(text):
        """Where the parts of a long page are."""
        found = re.findall(r'<h[23] id="([^"]+)">([^<]+)</h', text)
        if len(found) < 8:
            return ""
        names = {}
        for anchor, name in found:
            names.setdefault(name, anchor)
        links = "".join(f'<li><a href="#{anchor}">{name}</a></li>' for name, anchor in names.items())
        return f'<h2>On this page</h2><ul class="columns short">{links}</ul>\n'

    def source_of(self, file, page):
        path = file if (self.root / file).is_file() else f"testing/{file}"
        self.needed_sources.add(path)
        return f'<a href="{self.relative(f"source/{path}.html", page)}">the header</a>'

    def write_reference_index(self):
        page, body = "reference/index.html", ["<h1>Types and operations</h1>\n", REFERENCE_RULES]
        for folder, title in REFERENCE_GROUPS.items():
            rows = []
            for file in self.headers():
                short = file.removeprefix("OrvoAPI/")
                if posixpath.dirname(short) != folder:
                    continue
                types = [found for found in self.reference.types
                         if found.file == file and "::" not in found.name]
                named = types + [each for each in self.reference.free if each.file == file
                                 and each.kind in ("enum", "typedef", "function")]
                links = dict.fromkeys(f'<a href="{self.relative(self.places[each.id], page)}">'
                                      f"{escape(each.name)}</a>" for each in named)
                first = " ".join(text_of(named[0].doc).split()) if named else ""
                sentence = re.split(r"(?<=[.:;])\s", first)[0].rstrip(":;")
                head = f'<a href="{self.relative(self.header_page(file), page)}">{escape(short)}</a>'
                rows.append(f"<dt>{head}</dt><dd>{', '.join(links)}"
                            f'<br><span class="note">{escape(sentence)}</span></dd>')
            if rows:
                body.append(f"<h2>{escape(title)}</h2>\n<dl>" + "\n".join(rows) + "</dl>")
        left_out = set(posixpath.dirname(file.removeprefix("OrvoAPI/")) for file in self.headers())
        for folder in left_out - set(REFERENCE_GROUPS):
            self.faults.append(f"docs/site/make_site.py: {folder} has no heading in the reference")
        self.write(page, "Types and operations", "\n".join(body))

    # Everything else.

    def write_sources(self):
        done = set()
        while self.needed_sources - done:
            file = min(self.needed_sources - done)
            done.add(file)
            page, path = f"source/{file}.html", self.root / file
            if path.is_dir():
                names = sorted(each.name for each in path.iterdir())
                links = "".join(f"<li>{self.source_link(f'{file}/{name}', page)}</li>"
                                for name in names if (path / name).suffix != ".pyc")
                self.write(page, file, f"<h1>{escape(file)}</h1><ul>{links}</ul>")
                continue
            text = path.read_text(encoding="utf-8")
            if file.endswith(".md"):
                found = Page(text, self.resolver(file, page), self.code_linker(page),
                             lambda source, page=page: self.source_link(source, page))
                self.write(page, found.title, found.body)
                continue
            language = {".h": "cpp", ".cpp": "cpp", ".json": "json", ".txt": "cmake"}.get(path.suffix, "")
            if not language and text.startswith("#!") and "bash" in text[:40]:
                language = "sh"
            self.write(page, file, f"<h1>{escape(file)}</h1>" + code_block(text, language))

    def write_index(self):
        """Everything by name, for those who read without scripts."""
        letters = {}
        for title, target, where, _ in sorted(self.search, key=lambda entry: entry[0].lower()):
            letter = title[0].upper()
            letters.setdefault(letter, []).append(
                f'<li><a href="{target}">{escape(title)}</a>'
                + (f' <span class="note">{escape(where)}</span>' if where else "") + "</li>")
        body = ["<h1>Everything, A to Z</h1>"]
        for letter, entries in letters.items():
            body.append(f'<h2>{escape(letter)}</h2><ul class="columns">{"".join(entries)}</ul>')
        self.write("all.html", "Everything, A to Z", "\n".join(body))
        self.write("search.html", "Search", (
            '<h1>Search</h1><p id="status" role="status"></p><ol id="results"></ol>'
            '<noscript><p>The search needs JavaScript. <a href="all.html">Everything, A to Z</a> '
            'does not.</p></noscript><script src="search-index.js"></script>'
            '<script src="search.js"></script>'))

    def check_links(self):
        anchors = {page: set(re.findall(r'\bid="([^"]+)"', text))
                   for page, text in self.written.items()}
        for page, text in self.written.items():
            twice = re.findall(r'\bid="([^"]+)"', text)
            for name in sorted({name for name in twice if twice.count(name) > 1}):
                self.faults.append(f"{page}: two places are called #{name}")
            for target in re.findall(r'(?:href|src)="([^"]+)"', text):
                if re.match(r"[a-z]+:", target):
                    continue
                path, _, anchor = html.unescape(target).partition("#")
                full = posixpath.normpath(posixpath.join(posixpath.dirname(page), path)) if path else page
                if full not in self.written and not (self.output / full).is_file():
                    self.faults.append(f"{page}: {target} leads nowhere")
                elif anchor and anchor not in anchors.get(full, ()):
                    self.faults.append(f"{page}: {target}: there is no such place in the page")

    def make(self):
        shutil.rmtree(self.output, ignore_errors=True)
        (self.output / "images").mkdir(parents=True)
        for image in (self.root / "docs/images").iterdir():
            shutil.copy(image, self.output / "images")
        for name in ("style.css", "search.js"):
            shutil.copy(HERE / name, self.output)
        self.read_documents()
        self.write_documents()
        self.write_reference()
        self.write_sources()
        self.write_index()
        (self.output / "search-index.js").write_text(
            "const SEARCH_INDEX = " + json.dumps(self.search, ensure_ascii=False,
                                                 separators=(",", ":")) + ";\n", encoding="utf-8")
        self.check_links()
        for page, text in self.written.items():
            path = self.output / page
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
        return sorted(set(self.faults))


def main():
    root, xml, output, version = sys.argv[1:]
    site = Site(pathlib.Path(root).resolve(), xml, pathlib.Path(output).resolve(), version)
    faults = site.make()
    operations = len(site.reference.operations())
    print("\n".join(faults) if faults else
          f"{len(site.written)} pages, {len(site.reference.types)} types, {operations} operations, "
          "each with an example")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
