# SPDX-License-Identifier: MIT
import pathlib
import re

import vxclss

README = (pathlib.Path(__file__).resolve().parents[1] / "README.md").read_text(encoding="utf-8")


def test_its_first_program_runs(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    program = re.search(r"```python\n(.*?)```", README, re.DOTALL).group(1)
    names = {}
    exec(program, names)
    assert names["answers"].labels.tolist() == names["y"]
    assert vxclss.load("parts.model").tool == names["tool"]
    assert vxclss.load("parts.model").category_names == ["good", "damaged"]


def test_it_names_every_error():
    leaves = [name for name in vxclss.__all__
              if isinstance(getattr(vxclss, name), type)
              and issubclass(getattr(vxclss, name), vxclss.Error)]
    assert len(leaves) == 19
    for name in leaves:
        assert f"`{name}`" in README or f"`vxclss.{name}`" in README, name
