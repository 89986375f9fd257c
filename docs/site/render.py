"""Turns Markdown and declarations into HTML."""

import html
import re
import textwrap

from markdown_it import MarkdownIt
from pygments import highlight
from pygments.formatters import HtmlFormatter
from pygments.lexers import get_lexer_by_name
from pygments.util import ClassNotFound

from reference import text_of, tidy

FORMATTER = HtmlFormatter(nowrap=True)
LANGUAGES = {"cpp", "sh", "json", "cmake", "xml", "python"}


def colored(code, language):
    if language not in LANGUAGES:
        return html.escape(code, quote=False)
    try:
        return highlight(code, get_lexer_by_name(language), FORMATTER)
    except ClassNotFound:
        return html.escape(code, quote=False)


def code_block(code, language, source=""):
    """A block of code; one that is wider than the screen can be scrolled, with the keyboard too."""
    caption = f"<figcaption>{source}</figcaption>" if source else ""
    return (f'<figure class="code">{caption}<pre tabindex="0"><code>'
            f"{colored(textwrap.dedent(code).rstrip(), language)}</code></pre></figure>\n")


def slug(title, taken):
    """The anchor that GitHub gives a heading."""
    base = re.sub(r"[^\w\- ]", "", re.sub(r"[`*_]{1,2}(?=\S)|(?<=\S)[`*]", "", title).lower())
    base = base.strip().replace(" ", "-")
    name, count = base, 0
    while name in taken:
        count += 1
        name = f"{base}-{count}"
    taken.add(name)
    return name


class Page:
    """A Markdown document as HTML: its title, its headings, and what it links to."""

    def __init__(self, text, resolve, link_code, source_link):
        self.title, self.headings, self.links = "", [], []
        self.resolve, self.link_code, self.source_link = resolve, link_code, source_link
        markdown = MarkdownIt("commonmark", {"html": False}).enable(["table", "strikethrough"])
        tokens = markdown.parse(text)
        taken = set()
        for at, token in enumerate(tokens):
            if token.type == "heading_open":
                title = self.plain(tokens[at + 1])
                token.attrs["id"] = slug(title, taken)
                self.headings.append((int(token.tag[1]), title, token.attrs["id"]))
            for child in token.children or []:
                self.mend(child)
        self.title = next((title for level, title, _ in self.headings if level == 1), "")
        self.body = self.render(markdown, tokens)

    @staticmethod
    def plain(inline):
        return "".join(child.content for child in inline.children
                       if child.type in ("text", "code_inline"))

    def mend(self, child):
        if child.type == "link_open":
            child.attrs["href"] = self.resolve(child.attrs["href"])
        elif child.type == "image":
            child.attrs["src"] = self.resolve(child.attrs["src"])

    def render(self, markdown, tokens):
        rules = markdown.renderer.rules

        def fence(tokens, at, *_):
            words = tokens[at].info.split()
            source = words[1] if len(words) > 1 and "/" in words[1] else ""
            return code_block(tokens[at].content, words[0] if words else "",
                              self.source_link(source) if source else "")

        # What is in a link already is no second one.
        depth = [0]

        def code_inline(tokens, at, *_):
            inside = any(t.type == "link_open" for t in tokens[:at]) and (
                sum(t.type == "link_open" for t in tokens[:at])
                > sum(t.type == "link_close" for t in tokens[:at]))
            return code_words(tokens[at].content, None if inside else self.link_code)

        def table_open(*_):
            depth[0] += 1
            return '<div class="wide" role="region" aria-label="Table" tabindex="0"><table>\n'

        rules["fence"] = rules["code_block"] = fence
        rules["code_inline"] = code_inline
        rules["table_open"] = table_open
        rules["table_close"] = lambda *_: "</table></div>\n"
        return markdown.renderer.render(tokens, markdown.options, {})


def code_words(words, link_code):
    shown = f"<code>{html.escape(words, quote=False)}</code>"
    target = link_code(words) if link_code else None
    return f'<a href="{target}">{shown}</a>' if target else shown


def doc_html(element, link_code):
    """A doc comment. A tag that is not known stops the build rather than lose text."""
    if element is None:
        return ""
    return "".join(block(child, link_code) for child in element)


def block(element, link_code):
    if element.tag == "itemizedlist":
        items = "".join(f"<li>{doc_html(item, link_code)}</li>" for item in element)
        return f"<ul>{items}</ul>\n"
    if element.tag != "para":
        raise ValueError(f"a doc comment has <{element.tag}>")
    out, text = [], [html.escape(element.text or "", quote=False)]

    def flush():
        words = "".join(text).strip()
        if words:
            out.append(f"<p>{words}</p>\n")
        text.clear()

    for child in element:
        if child.tag == "computeroutput":
            text.append(code_words(text_of(child), link_code))
        elif child.tag == "verbatim":
            flush()
            out.append(code_block(child.text.strip("\n"), "cpp"))
        elif child.tag == "itemizedlist":
            flush()
            out.append(block(child, link_code))
        elif child.tag == "ref":
            text.append(html.escape(text_of(child), quote=False))
        else:
            raise ValueError(f"a doc comment has <{child.tag}>")
        text.append(html.escape(child.tail or "", quote=False))
    flush()
    return "".join(out)


def type_html(element, link_id):
    """A type with links to the types that it names."""
    if element is None:
        return ""
    marked = element.text or ""
    refs = []
    for child in element:
        refs.append((link_id(child.get("refid")), text_of(child)))
        marked += f"\x01{len(refs) - 1}\x02" + (child.tail or "")
    shown = html.escape(tidy(marked), quote=False).replace(" &amp;", "&amp;")

    def link(match):
        target, words = refs[int(match.group(1))]
        words = html.escape(words, quote=False)
        return f'<a href="{target}">{words}</a>' if target else words

    return re.sub("\x01(\\d+)\x02", link, shown)


def signature(each, link_id, hides_type=False):
    shown = type_html(each.type, link_id)
    name = f"<strong>{html.escape(each.name, quote=False)}</strong>"
    template = f"{html.escape(each.template, quote=False)}\n" if each.template else ""
    if each.kind == "typedef":
        return f"{template}using {name} = {shown}"
    if each.kind == "enum":
        return f"enum class {name}"
    front = f"{template}{'static ' if each.is_static else ''}{shown}{' ' if shown else ''}"
    if each.kind == "variable":
        value = html.escape(tidy(each.initializer), quote=False)
        if len(value) > 60:
            value = ""
        gap = "" if value.startswith(("=", "{")) or not value else "= "
        return f"{front}{name}{' ' if value.startswith('=') else ''}{gap}{value}"
    if each.kind == "define":
        return f"#define {name}"
    parts = []
    for kind, parameter, default in each.parameters:
        part = " ".join(word for word in (type_html(kind, link_id), parameter or "") if word)
        parts.append(part + (f" = {html.escape(tidy(default), quote=False)}" if default else ""))
    suffix = html.escape(each.suffix.replace(" override", "").replace("=0", " = 0"), quote=False)
    return f"{front}{name}({', '.join(parts)}){suffix.rstrip()}"
