"""make_manual.py SOURCE-TREE FOLDER: FOLDER/Tandeko.pdf and FOLDER/Tandeko.chm of docs/uzytkownik.md."""

import pathlib
import re
import sys
import tempfile

import guide
import help_file
import pdf


def main(tree, folder):
    tree, folder = pathlib.Path(tree).resolve(), pathlib.Path(folder).resolve()
    folder.mkdir(parents=True, exist_ok=True)
    project = (tree / "CMakeLists.txt").read_text(encoding="utf-8")
    version = re.search(r"project\(tandeko VERSION ([\d.]+)", project)[1]
    docs = tree / "docs"
    with tempfile.TemporaryDirectory() as workshop:
        workshop = pathlib.Path(workshop)
        # Each reads the guide anew, for it rewrites links and pictures its own way. A file is replaced once its
        # successor is whole.
        made = [
            pdf.make(guide.read_guide(docs / "uzytkownik.md"), docs, tree, version, workshop / "Tandeko.pdf"),
            help_file.make(guide.read_guide(docs / "uzytkownik.md"), docs, tree, version, workshop),
        ]
        for file in made:
            (folder / file.name).write_bytes(file.read_bytes())
            print(f"{folder / file.name}: {file.stat().st_size // 1024} KB")


if __name__ == "__main__":
    try:
        main(*sys.argv[1:])
    except guide.GuideError as error:
        sys.exit(f"docs/uzytkownik.md: {error}")
