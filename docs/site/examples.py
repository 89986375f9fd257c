"""Which example shows which operation. Examples are functions and classes in examples/, whose programs
are built and run; the comment before one says what it shows: `/// Shows Type::name(parameters)`."""

import pathlib
import re

COMMENT = re.compile(r"^/// Shows (.*?)\n(?=[^/])", re.M | re.S)
KEY = re.compile(r"(?:~?\w+(?:::\w+)*)(?: co_await|::operator\S+?)?(?:\([\w, ]*\))?")


class Examples:
    def __init__(self, root):
        self.found, self.problems = {}, []
        for file in sorted(pathlib.Path(root, "examples").rglob("*.cpp")):
            self.read(file.relative_to(root).as_posix(), file.read_text(encoding="utf-8"))

    def read(self, name, text):
        for match in COMMENT.finditer(text):
            code = text[match.end():]
            end = code.find("\n}")
            code = code[:end + 3 if code[end + 2:end + 3] == ";" else end + 2]
            keys = re.sub(r"\s*\n///\s*", " ", match.group(1)).rstrip(". ")
            for key in re.split(r";\s*", keys):
                called = re.sub(r"\(.*", "", key).split("::")[-1].split(" ")[-1]
                if not re.search(rf"\b{re.escape(called)}\b", code):
                    self.problems.append(f"{name}: an example says that it shows {key}, and does not")
                self.found.setdefault(key, (name, code))

    def of(self, key):
        return self.found.get(key)

    def faults(self, reference):
        operations = reference.operations()
        return (self.problems
                + [f"{each.file}: no example shows {key}" for key, each in operations.items()
                   if key not in self.found]
                + [f"{name}: there is no operation {key}" for key, (name, _) in self.found.items()
                   if key not in operations])
