"""The user's guide as a tree of sections, read from its Markdown."""

import dataclasses
import re
import xml.etree.ElementTree as ET

import markdown

# A line of its own below a heading: words under which the index of the help lists the section.
INDEX_WORDS = re.compile(r"^<!-- indeks: (.*?) -->\n", re.M)
# Words of one letter that may not end a line.
LONE_LETTERS = re.compile(r"(?<![^\s(„])([aiouwzAIOUWZ]) ")
# Dashes and figures that belong to the word before or after them.
DASHES = re.compile(r" –")


class GuideError(Exception):
    pass


@dataclasses.dataclass
class Section:
    level: int  # 1: the whole guide, 2: chapter, 3: part of a chapter
    title: str
    slug: str  # as links in the Markdown name it
    body: ET.Element  # a <div>
    index_words: list
    bold_words: list
    children: list = dataclasses.field(default_factory=list)

    def walk(self):
        yield self
        for child in self.children:
            yield from child.walk()


def slug_of(title):
    """The name that a link [text](#name) in the Markdown gives a heading."""
    return re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-")


def headings_and_bodies(text):
    """(level, title, Markdown below it) for each heading."""
    parts = re.split(r"^(#{1,3}) (.+)\n", text, flags=re.M)
    if parts[0].strip():
        raise GuideError("text before the first heading")
    return [(len(parts[i]), parts[i + 1].strip(), parts[i + 2]) for i in range(1, len(parts), 3)]


def polish_spaces(element, inside_code=False):
    inside_code = inside_code or element.tag in ("code", "pre")
    if not inside_code and element.text:
        element.text = bind(element.text)
    for child in element:
        polish_spaces(child, inside_code)
        if not inside_code and child.tail:
            child.tail = bind(child.tail)


def bind(text):
    return DASHES.sub("\u00a0–", LONE_LETTERS.sub("\\1\u00a0", text))


def make_figures(body):
    """A paragraph that is nothing but a picture becomes a figure with its caption."""
    for i, element in enumerate(list(body)):
        pictures = element.findall("img")
        if element.tag != "p" or len(pictures) != 1 or len(element) != 1 or (element.text or "").strip():
            continue
        picture = pictures[0]
        picture.tail = None
        figure = ET.Element("div", {"class": "figure"})
        figure.append(picture)
        caption = ET.SubElement(figure, "p", {"class": "caption"})
        caption.text = picture.get("alt")
        figure.tail = element.tail
        body[i] = figure


def section_of(level, title, text):
    index_words = [word.strip() for line in INDEX_WORDS.findall(text) for word in line.split(";")]
    html = markdown.markdown(INDEX_WORDS.sub("", text), extensions=["tables", "sane_lists"])
    body = ET.fromstring("<div>" + html + "</div>")
    bold_words = ["".join(element.itertext()) for element in body.iter("strong")]
    make_figures(body)
    polish_spaces(body)
    return Section(level, title, slug_of(title), body, index_words, bold_words)


def read_guide(path):
    """The root section; every link inside the guide is known to lead somewhere."""
    root, chapter = None, None
    for level, title, text in headings_and_bodies(path.read_text(encoding="utf-8")):
        section = section_of(level, title, text)
        if level == 1 and root is None:
            root = section
        elif level == 2 and root is not None:
            root.children.append(section)
            chapter = section
        elif level == 3 and chapter is not None:
            chapter.children.append(section)
        else:
            raise GuideError(f"heading in a wrong place: {title}")
    known = [section.slug for section in root.walk()]
    if len(known) != len(set(known)):
        raise GuideError("two headings of one name")
    for section in root.walk():
        for link in section.body.iter("a"):
            target = link.get("href", "")
            if target.startswith("#") and target[1:] not in known:
                raise GuideError(f"{section.title}: no heading for the link {target}")
        for picture in section.body.iter("img"):
            if not (path.parent / picture.get("src")).is_file():
                raise GuideError(f"{section.title}: no picture {picture.get('src')}")
    return root
