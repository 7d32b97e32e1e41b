"""What mkdocs does beside its usual: pages from the top of the project, a search that works from files,
and the end of a build whose links lead nowhere."""
import re
import tempfile
from html import unescape
from pathlib import Path
from urllib.parse import unquote

from mkdocs.exceptions import PluginError
from mkdocs.structure.files import File

ROOT = Path(__file__).parent.parent
PAGES = {"README.md": "index.md", "CONTRIBUTING.md": "contributing.md", "CHANGELOG.md": "changelog.md"}
_made = tempfile.TemporaryDirectory()
_ids, _links = {}, []


def as_page(text):
    """A page of the top as one of docs/: links lose their first folder."""
    text = re.sub(r"\]\(docs/", "](", text)
    for name, page in PAGES.items():
        text = text.replace(f"]({name}", f"]({page}")
    return text


def on_files(files, config):
    for name, page in PAGES.items():
        Path(_made.name, page).write_text(as_page((ROOT / name).read_text()))
        files.append(File(page, _made.name, config["site_dir"], config["use_directory_urls"]))
    return files


def on_post_page(output, page, config):
    _ids[page.url] = set(re.findall(r'\bid="([^"]+)"', output))
    _links.extend((page.url, unquote(unescape(link))) for link in re.findall(r'<a[^>]* href="([^"]+)"', output))
    return output


def on_post_build(config):
    site = Path(config["site_dir"])
    index = (site / "search/search_index.json").read_text()
    (site / "search/search_index.js").write_text(f"var __search = {{index: Promise.resolve({index})}};\n")
    for page, link in _links:
        place, _, mark = link.partition("#")
        if re.match(r"[a-z]+:", place):
            continue
        target = (place or page).removeprefix("./")
        if not (site / target).exists() or (mark and mark not in _ids.get(target, {mark})):
            raise PluginError(f"{page}: {link} leads nowhere")
