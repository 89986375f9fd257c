#!/usr/bin/python3
"""Draws what the tool shows on a terminal: pictures.py ORVO FOLDER.

Each command is run on a pseudo-terminal, against the demo service; the pictures are SVG files."""
import fcntl
import html
import io
import os
import pty
import re
import struct
import sys
import termios
from pathlib import Path

from rich.cells import cell_len
from rich.console import Console
from rich.style import Style
from rich.terminal_theme import TerminalTheme
from rich.text import Text

# The command, columns, and how many lines of it are enough.
PICTURES = {
    "tool-guide": ("guide", 92, 24),
    "tool-page": ("page show-workbench", 84, 28),
    "tool-palette": ("palette", 64, 16),
}
THEME = TerminalTheme(
    (13, 17, 23), (230, 235, 240),
    [(13, 17, 23), (232, 104, 94), (106, 196, 120), (242, 193, 78), (110, 165, 245),
     (200, 140, 230), (95, 200, 210), (200, 205, 212)])
CHARACTER = 12.2  # rich's width of one, for its size of 20
# As rich draws it, with the reader's own font in place of one from the network.
FORMAT = """<svg viewBox="0 0 {width} {height}" xmlns="http://www.w3.org/2000/svg">
<style>
.{unique_id}-matrix {{ font: {char_height}px/{line_height}px "DejaVu Sans Mono", Menlo, Consolas, monospace; }}
.{unique_id}-title {{ font: 18px sans-serif; }}
{styles}
</style>
<defs>
<clipPath id="{unique_id}-clip-terminal"><rect width="{terminal_width}" height="{terminal_height}"/></clipPath>
{lines}
</defs>
{chrome}
<g transform="translate({terminal_x}, {terminal_y})" clip-path="url(#{unique_id}-clip-terminal)">
{backgrounds}
<g class="{unique_id}-matrix">
{matrix}
</g>
</g>
</svg>
"""


def shown(command, columns):
    """What the command writes to a terminal of that width."""
    child, terminal = pty.fork()
    if child == 0:
        os.environ |= {"TERM": "xterm-256color", "COLORTERM": "truecolor", "COLUMNS": str(columns)}
        os.execvp(command[0], command)
    fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("HHHH", 40, columns, 0, 0))
    written = bytearray()
    try:
        while part := os.read(terminal, 65536):
            written += part
    except OSError:  # Linux's way to say that nobody writes any more
        pass
    if os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) != 0:
        sys.exit(f"{' '.join(command)} failed: {written.decode()}")
    return written.decode().replace("\r\n", "\n")


def with_wide_apart(text):
    """Characters of two cells become texts of their own, so that no font moves what follows."""
    for at, character in enumerate(text.plain):
        if cell_len(character) > 1:
            text.stylize(Style.from_meta({"wide": True}), at, at + 1)
    return text


def in_cells(text):
    """The text's width by what it takes on a terminal: rich counts code points."""
    width = CHARACTER * cell_len(html.unescape(text[2]))
    return f'textLength="{width:.1f}"{text[1]}{text[2]}<'


def main(orvo, folder):
    for name, (words, columns, most) in PICTURES.items():
        lines = shown([orvo, "--demo", *words.split()], columns).splitlines()[:most]
        console = Console(record=True, width=columns, file=io.StringIO(), force_terminal=True,
                          color_system="truecolor", legacy_windows=False)
        console.print(with_wide_apart(Text.from_ansi("\n".join(lines))))
        svg = console.export_svg(title=f"orvo {words}", theme=THEME, code_format=FORMAT,
                                 unique_id=name)
        svg = re.sub(r'textLength="[^"]*"([^>]*>)([^<]*)<', in_cells, svg)
        (Path(folder) / f"{name}.svg").write_text(svg)


main(*sys.argv[1:])
