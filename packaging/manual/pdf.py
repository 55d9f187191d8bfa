"""The printable manual."""

import struct
import xml.etree.ElementTree as ET
from html import escape

import weasyprint

LARGEST = 145  # millimetres: a screenshot of the whole window
PIXEL = 0.165  # millimetres of a smaller one's pixel


def scale_pictures(section, docs):
    for picture in section.body.iter("img"):
        with open(docs / picture.get("src"), "rb") as file:
            width = struct.unpack(">I", file.read(20)[16:20])[0]
        picture.set("style", f"width: {min(LARGEST, width * PIXEL):.1f}mm")


def mark_tables(section):
    """Tables of two columns have a narrow first one."""
    for table in section.body.iter("table"):
        if len(table.findall("thead/tr/th")) == 2:
            table.set("class", "pairs")


def inner_html(body):
    return escape(body.text or "") + "".join(ET.tostring(child, encoding="unicode") for child in body)


def contents(root):
    lines = []
    for section in root.walk():
        if section.level > 1:
            lines.append(f'<li class="level{section.level}"><a href="#{section.slug}">{escape(section.title)}</a></li>')
    return "<ul>" + "".join(lines) + "</ul>"


def make(root, docs, tree, version, target):
    for section in root.walk():
        scale_pictures(section, docs)
        mark_tables(section)
    chapters = "".join(
        f'<h{s.level} id="{s.slug}">{escape(s.title)}</h{s.level}>{inner_html(s.body)}'
        for s in root.walk()
        if s.level > 1
    )
    name, subtitle = (part.strip() for part in root.title.split("–"))
    html = f"""<!DOCTYPE html>
<html lang="pl"><head><meta charset="utf-8"><title>{escape(root.title)}</title>
<meta name="author" content="Kwarcel Software"><meta name="keywords" content="Tandeko, ewidencja wyposażenia">
</head><body>
<section class="cover"><img src="{(tree / 'resources/tandeko.svg').as_uri()}" alt="">
<p class="name">{escape(name)}</p><p class="subtitle">{escape(subtitle.capitalize())}</p>
<div class="intro">{inner_html(root.body)}</div><p class="version">Wersja {version}</p></section>
<section class="contents"><p class="heading">Spis treści</p>{contents(root)}</section>
<section class="chapters">{chapters}</section>
</body></html>"""
    style = weasyprint.CSS(filename=tree / "packaging/manual/pdf.css")
    document = weasyprint.HTML(string=html, base_url=docs.as_uri() + "/").render(
        stylesheets=[style], optimize_size=("fonts", "images"))
    document.write_pdf(target)
    return target
