"""The pages of the package: whoever reads them away from the source tree finds what they point at."""

import unittest
from html.parser import HTMLParser
from urllib.parse import unquote, urldefrag, urlparse

from Package import SOURCE, VERSION, Unzipped


def setUpModule():
    global package
    package = Unzipped()
    unittest.addModuleCleanup(package.close)


class Page(HTMLParser):
    def __init__(self, path):
        super().__init__()
        self.references, self.anchors, self.text = [], set(), ""
        self.feed(path.read_text())

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        self.anchors.add(attributes.get("id"))
        self.references += [attributes[name] for name in ("href", "src") if name in attributes]

    def handle_data(self, data):
        self.text += data


class DocumentationTests(unittest.TestCase):
    def pages(self):
        found = {path: Page(path) for path in package.folder.rglob("*.html")}
        self.assertGreater(len(found), 5)
        return found

    def test_Links_LeadSomewhere(self):
        pages = self.pages()
        count = 0
        for path, page in pages.items():
            for reference in page.references:
                target, anchor = urldefrag(reference)
                if urlparse(target).scheme in ("http", "https", "data"):
                    continue
                count += 1
                with self.subTest(page=path.name, link=reference):
                    file = (path.parent / unquote(target)).resolve() if target else path
                    self.assertTrue(file.exists(), "leads nowhere")
                    self.assertTrue(file.is_relative_to(package.folder), "leads out of the package")
                    self.assertNotEqual(file.suffix, ".md")
                    if anchor:
                        self.assertIn(anchor, pages[file].anchors)
        self.assertGreater(count, 20)

    def test_EveryPage_HasItsText(self):
        for path, page in self.pages().items():
            source = SOURCE / path.relative_to(package.folder).with_suffix(".md")
            title = source.read_text().splitlines()[0].lstrip("# ")
            with self.subTest(path.name):
                self.assertIn(title, page.text)

    def test_Pictures_AreAllThere(self):
        pictures = {picture.name for picture in (SOURCE / "docs/pictures").iterdir()}
        self.assertEqual({picture.name for picture in (package.folder / "docs/pictures").iterdir()}, pictures)

    def test_Changes_NameTheVersion(self):
        self.assertRegex(Page(package.folder / "CHANGELOG.html").text, rf"(?m)^(Unreleased: )?{VERSION}\b")
