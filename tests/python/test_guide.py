"""Each block of docs/guide/python.md, of scale.md and of README's part on Python runs, and prints what the page says.

KESTO_UPDATE=1 in the environment rewrites what the guides say; read the difference before committing it.
"""
import contextlib
import io
import os
import re
import shutil

import pytest

from conftest import ROOT, comparable

GUIDE = ROOT / "docs/guide"
BLOCK = re.compile(r"```python\n(.*?)```\n(?:\n```text\n(.*?)```\n)?", re.DOTALL)

pytestmark = [pytest.mark.filterwarnings("ignore::DeprecationWarning"), pytest.mark.filterwarnings("ignore::ResourceWarning")]


def printed(code, names):
    with contextlib.redirect_stdout(io.StringIO()) as out:
        exec(compile(code, "page", "exec"), names)
    return re.sub(r" +$", "", out.getvalue(), flags=re.MULTILINE)


@pytest.mark.parametrize("page, blocks, last", [("python.md", 11, "swept"), ("scale.md", 1, "pieces")])
def test_the_guide_prints_what_it_says(page, blocks, last, tmp_path, monkeypatch):
    shutil.copytree(ROOT / "examples/rainwater-house", tmp_path / "house")
    monkeypatch.chdir(tmp_path)
    names = {"__name__": "__main__"}
    text, begin, new = (GUIDE / page).read_text(), 0, []
    for block in BLOCK.finditer(text):
        out = printed(block[1], names)
        if os.environ.get("KESTO_UPDATE") and block[2] is not None:
            new += [text[begin:block.start(2)], out]
            begin = block.end(2)
        else:
            assert comparable(out) == comparable(block[2] or ""), block[1]
    assert last in names and len(BLOCK.findall(text)) == blocks
    if new:
        (GUIDE / page).write_text("".join([*new, text[begin:]]))


def test_the_readme(tmp_path, monkeypatch):
    shutil.copytree(ROOT / "examples/rainwater-house", tmp_path / "my-house")
    monkeypatch.chdir(tmp_path)
    (code,) = re.findall(r"```python\n(.*?)```", (ROOT / "README.md").read_text(), re.DOTALL)
    names = {}
    printed(code, names)
    assert names["run"].flows.sizes["time"] == 1461
