"""The README's Python examples run as they stand."""

from __future__ import annotations

import os
import re
import subprocess
import sys
from pathlib import Path

import pytest

PACKAGE = Path(__file__).resolve().parents[1]
README = PACKAGE.parents[1] / "README.md"
EXAMPLES = re.findall(r"```python\n(.*?)```", README.read_text(), flags=re.S)


def test_the_readme_has_python_examples() -> None:
    assert len(EXAMPLES) >= 2


@pytest.mark.parametrize("example", EXAMPLES, ids=[f"example{n}" for n in range(len(EXAMPLES))])
def test_readme_example_runs(example: str) -> None:
    # Each in a process of its own, as a user would run it; the real library
    # finds no panels here, so its loops do nothing but must still run.
    environment = dict(os.environ, PYTHONPATH=str(PACKAGE))
    result = subprocess.run([sys.executable, "-c", example], capture_output=True, text=True, timeout=60,
                            env=environment)
    assert result.returncode == 0, result.stderr
