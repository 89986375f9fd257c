"""The public declarations, as Doxygen's XML tells them, and which of them are operations: what returns
a future or takes a callback."""

import html
import pathlib
import re
import xml.etree.ElementTree as ElementTree
from dataclasses import dataclass, field

# What a template parameter that takes a callback is called.
CALLABLE = re.compile(r"^(?:const )?F\b")
FUTURE = re.compile(r"\b(?:Future|FutureAwaiter)\b")


@dataclass
class Member:
    id: str
    kind: str
    name: str
    owner: str
    file: str
    line: int
    type: ElementTree.Element
    parameters: list
    template: str
    initializer: str
    suffix: str
    doc: ElementTree.Element
    is_static: bool
    overrides: bool
    values: list = field(default_factory=list)

    @property
    def qualified(self):
        return f"{self.owner}::{self.name}" if self.owner else self.name

    @property
    def key(self):
        """By what an example names it: Type::name(parameters)."""
        if self.kind != "function":
            return self.qualified
        return f"{self.qualified}({', '.join(name or '' for _, name, _ in self.parameters)})"


@dataclass
class Type:
    id: str
    kind: str
    name: str
    file: str
    line: int
    template: str
    bases: list
    doc: ElementTree.Element
    definition: ElementTree.Element = None
    members: list = field(default_factory=list)


def text_of(element):
    return "" if element is None else "".join(element.itertext())


def doc_of(element):
    """A doc comment whole: Doxygen calls those of enumerations and concepts brief."""
    whole = ElementTree.Element("doc")
    for part in ("briefdescription", "detaileddescription"):
        whole.extend(element.find(part) if element.find(part) is not None else ())
    return whole


def tidy(code):
    """C++ as clang-format would have it, where Doxygen puts blanks."""
    code = re.sub(r"<\s+", "<", re.sub(r"\s+>", ">", code))
    return re.sub(r"\s+([&*]+)", r"\1", re.sub(r"\s+", " ", code)).strip()


def template_of(element):
    parameters = element.find("templateparamlist")
    if parameters is None:
        return ""
    shown = []
    for parameter in parameters:
        words = [text_of(parameter.find("type")), text_of(parameter.find("declname"))]
        shown.append(" ".join(word for word in words if word))
    return tidy(f"template <{', '.join(shown)}>")


def place(element):
    location = element.find("location")
    return location.get("file"), int(location.get("line"))


def member(element, owner):
    file, line = place(element)
    parameters = [(parameter.find("type"), parameter.findtext("declname"),
                   text_of(parameter.find("defval"))) for parameter in element.findall("param")]
    arguments = element.findtext("argsstring") or ""
    values = [(value.findtext("name"), doc_of(value))
              for value in element.findall("enumvalue")]
    return Member(element.get("id"), element.get("kind"), element.findtext("name"), owner, file, line,
                  element.find("type"), parameters, template_of(element),
                  text_of(element.find("initializer")), arguments[arguments.rfind(")") + 1:],
                  doc_of(element), element.get("static") == "yes",
                  element.find("reimplements") is not None, values)


def wanted(element):
    name, arguments = element.findtext("name"), element.findtext("argsstring") or ""
    return (element.get("kind") != "friend" and element.get("prot") == "public"
            and not arguments.endswith("=delete") and not name.startswith("ORVO_STOP")
            and name not in ("enumCases",))


class Reference:
    """All public types, concepts and free declarations, by the header that declares them."""

    def __init__(self, folder):
        self.types, self.free = [], []
        for file in sorted(pathlib.Path(folder).glob("*.xml")):
            root = ElementTree.parse(file).getroot()
            for compound in root.findall("compounddef"):
                self.read(compound)
        self.types.sort(key=lambda found: (found.file, found.line))
        self.free.sort(key=lambda found: (found.file, found.line))
        self.callbacks = {"Job"} | {
            alias.name for alias in self.members() if alias.kind == "typedef"
            and re.search(r"std::function|Capability", text_of(alias.type))}
        # Returning a record that holds a fetch for later is as good as returning that.
        self.carriers = {found.name for found in self.types for each in found.members
                         if each.kind == "variable" and "Capability" in text_of(each.type)}

    def read(self, compound):
        kind, name = compound.get("kind"), compound.findtext("compoundname")
        if kind == "namespace" and name in ("orvo", "orvo::fixtures"):
            owner = name.removeprefix("orvo").removeprefix("::")
            self.free += [member(each, owner) for each in compound.iter("memberdef") if wanted(each)]
        elif kind in ("class", "struct", "concept") and name.startswith("orvo::"):
            if compound.get("prot", "public") != "public":
                return
            name = name.removeprefix("orvo::")
            found = Type(compound.get("id"), kind, name, *place(compound), template_of(compound),
                         [text_of(base) for base in compound.findall("basecompoundref")
                          if base.get("prot") == "public"], doc_of(compound),
                         compound.find("initializer") if kind == "concept" else None)
            found.members = sorted((member(each, name) for each in compound.iter("memberdef")
                                    if wanted(each)), key=lambda each: each.line)
            self.types.append(found)

    def members(self):
        return [*self.free, *(each for found in self.types for each in found.members)]

    def is_operation(self, each):
        """Whether it returns a future, takes a callback, or holds one that the app gives."""
        if each.overrides or each.kind not in ("function", "variable"):
            return False
        if each.owner in self.callbacks:  # a job that is moved takes none
            return any(CALLABLE.match(text_of(kind)) for kind, _, _ in each.parameters)
        shown = text_of(each.type)
        takes = re.compile(rf"std::function|\b(?:{'|'.join(sorted(self.callbacks))})\b")
        if FUTURE.search(shown) or takes.search(shown):
            return True
        if each.kind == "variable":
            return False
        if each.owner == "Future" and shown == "auto" or set(re.findall(r"\w+", shown)) & self.carriers:
            return True
        return any(takes.search(text_of(kind)) or CALLABLE.match(text_of(kind))
                   or FUTURE.search(text_of(kind)) for kind, _, _ in each.parameters)

    def operations(self):
        found = {}
        for each in self.members():
            if self.is_operation(each):
                found.setdefault(each.key, each)
        return found


def escape(code):
    return html.escape(code, quote=False)
