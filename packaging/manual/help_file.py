"""The help file: HTML Help, one page for each section, with contents and index.

Everything in it is in Windows-1250, the code page that viewers take for the contents and the index of a help file
in Polish; other characters are written by number.
"""

import re
import shutil
import subprocess
import unicodedata
import xml.etree.ElementTree as ET
from html import escape

import guide

# Of the window; plain letters, because it is shown in the code page of the program that shows it.
TITLE = "Tandeko - pomoc"
POLISH_ORDER = "aąbcćdeęfghijklłmnńoópqrsśtuvwxyzźż"
# What the index leaves out of the bold words: questions, short words, and names that are everywhere or not ours.
COMMON_WORDS = {"Aplikacje", "Biuro", "Odblokuj", "Odinstaluj", "Ustawienia", "Tandeko", "Kontynuuj",
                "OK", "Anuluj", "Zapisz", "Nowy", "Popraw", "Dodaj", "Usuń", "Numer", "Zmień", "Zestaw", "Rejestr",
                "Baza", "Słownik", "Kartoteka", "Narzędzia", "Pomoc", "Przedmioty", "Edycja", "Okno", "Tak", "Nie"}


def sort_key(word):
    letters = [POLISH_ORDER.find(letter) for letter in word.lower()]
    return [(1, letter) if letter >= 0 else (0, ord(sign)) for letter, sign in zip(letters, word.lower())]


def page_name(section):
    if section.level == 1:
        return "start.html"
    plain = section.slug.replace("ł", "l")
    plain = unicodedata.normalize("NFKD", plain).encode("ascii", "ignore").decode()
    return re.sub(r"-+", "-", plain).strip("-") + ".html"


def write(path, text):
    path.write_bytes(text.replace("\n", "\r\n").encode("cp1250", "xmlcharrefreplace"))


def page(section, names, version):
    for link in section.body.iter("a"):
        if link.get("href", "").startswith("#"):
            link.set("href", names[link.get("href")[1:]])
    for picture in section.body.iter("img"):
        picture.set("src", picture.get("src").rsplit("/", 1)[-1])
    # short_empty_elements would write <td/>, which browsers read as an opening tag.
    body = (section.body.text or "") + "".join(
        ET.tostring(child, encoding="unicode", short_empty_elements=child.tag in ("img", "hr")) for child in section.body
    )
    parts = "".join(f'<li><a href="{names[c.slug]}">{escape(c.title)}</a></li>' for c in section.children)
    if parts:
        body += f'<ul class="parts">{parts}</ul>'
    if section.level == 1:
        body += f'<p class="version">Wersja {version}</p>'
    return f"""<!DOCTYPE html>
<html lang="pl">
<head>
<meta http-equiv="Content-Type" content="text/html; charset=windows-1250">
<title>{escape(section.title)}</title>
<link rel="stylesheet" type="text/css" href="help.css">
</head>
<body>
<h1>{escape(section.title)}</h1>
{body}
</body>
</html>
"""


SITEMAP_HEAD = """<!DOCTYPE HTML PUBLIC "-//IETF//DTD HTML//EN">
<html>
<head>
<meta http-equiv="Content-Type" content="text/html; charset=windows-1250">
</head>
<body>
"""


def sitemap_object(name, pages, indent):
    lines = [f'<param name="Name" value="{escape(name)}">']
    for title, local in pages:
        # An entry of the index that leads to several pages offers their titles.
        if len(pages) > 1:
            lines.append(f'<param name="Name" value="{escape(title)}">')
        lines.append(f'<param name="Local" value="{local}">')
    inner = "".join(f"{indent}  {line}\n" for line in lines)
    return f'{indent}<li><object type="text/sitemap">\n{inner}{indent}</object>\n'


def contents(section, names, indent=""):
    """The section and what it holds; the chapters stand beside the page that the help starts with."""
    text = sitemap_object(section.title, [(section.title, names[section.slug])], indent)
    if section.level == 1:
        return text + "".join(contents(chapter, names, indent) for chapter in section.children)
    if section.children:
        text += f"{indent}<ul>\n" + "".join(contents(c, names, indent + "  ") for c in section.children) + f"{indent}</ul>\n"
    return text


def index_entries(root):
    """word -> sections, the words in Polish order."""
    found = {}

    def add(word, section):
        word = re.sub(r"\s+", " ", word).strip(" .:…")
        key = word.lower()
        if len(word) < 3 or word in COMMON_WORDS:
            return
        name, sections = found.setdefault(key, (word, []))
        if section not in sections:
            sections.append(section)

    for section in root.walk():
        for word in section.index_words:
            add(word, section)
    for section in root.walk():
        if section.level > 1:
            add(section.title, section)
        for word in section.bold_words:
            if not word.endswith("?") and (not word.endswith(".") or word.endswith("...")):
                add(word, section)
    return sorted(found.values(), key=lambda entry: sort_key(entry[0]))


def make(root, docs, tree, version, workshop):
    names = {section.slug: page_name(section) for section in root.walk()}
    if len(set(names.values())) != len(names):
        raise guide.GuideError("two pages of one name")
    index = index_entries(root)
    for section in root.walk():
        for picture in section.body.iter("img"):
            shutil.copy(docs / picture.get("src"), workshop)
        write(workshop / names[section.slug], page(section, names, version))
    shutil.copy(tree / "packaging/manual/help.css", workshop)

    write(workshop / "Tandeko.hhc", SITEMAP_HEAD + f"<ul>\n{contents(root, names)}</ul>\n</body>\n</html>\n")
    entries = "".join(
        sitemap_object(word, [(s.title, names[s.slug]) for s in sections], "") for word, sections in index
    )
    write(workshop / "Tandeko.hhk", SITEMAP_HEAD + f"<ul>\n{entries}</ul>\n</body>\n</html>\n")

    files = [*names.values(), "help.css", *sorted(p.name for p in workshop.glob("*.png"))]
    write(workshop / "Tandeko.hhp", f"""[OPTIONS]
Compatibility=1.1 or later
Compiled file=Tandeko.chm
Contents file=Tandeko.hhc
Index file=Tandeko.hhk
Default Window=main
Default topic=start.html
Full-text search=No
Binary TOC=No
Binary Index=No
Language=0x415 Polski
Title={TITLE}

[WINDOWS]
main="{TITLE}","Tandeko.hhc","Tandeko.hhk","start.html","start.html",,,,,0x42120,260,0x204e,[60,40,1100,760],,,,,,,0

[FILES]
""" + "\n".join(files) + "\n")
    result = subprocess.run(["chmcmd", "Tandeko.hhp"], cwd=workshop, capture_output=True, text=True, errors="replace")
    target = workshop / "Tandeko.chm"
    if result.returncode != 0 or not target.is_file():
        raise guide.GuideError("the help compiler failed:\n" + result.stdout + result.stderr)
    return target
