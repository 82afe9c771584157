#!/usr/bin/env python3
"""Writes pelmdev/_tables.py and pelmdev/models.pyi from the library's C headers.

The export table (core/pelm_exports.h), the constants (core/pelm_dev.h) and the
input records (core/pelm_records.h) are the one description of every model's
functions; the package builds its classes from the tables this writes, and the
stub gives type checkers and editors their methods.

    write_tables.py SOURCE_ROOT OUTPUT_DIR
"""

from __future__ import annotations

import re
import sys
from pathlib import Path

C_TO_CTYPE = {
    "int16_t": "c_int16", "uint8_t": "c_uint8", "uint16_t": "c_uint16",
    "int32_t": "c_int32", "uint32_t": "c_uint32", "char": "c_char",
}


def strip_comments(text: str) -> str:
    return re.sub(r"/\*.*?\*/", "", text, flags=re.S)


def macro_calls(text: str, names: tuple[str, ...]) -> list[tuple[str, list[str]]]:
    """Every call of one of these macros, with its top-level arguments."""
    calls = []
    for match in re.finditer(r"\b(" + "|".join(names) + r")\s*\(", text):
        depth, start, args, i = 1, match.end(), [], match.end()
        while depth:
            c = text[i]
            if c == "(":
                depth += 1
            elif c == ")":
                depth -= 1
            elif c == "," and depth == 1:
                args.append(text[start:i].strip())
                start = i + 1
            i += 1
        args.append(text[start:i - 1].strip())
        calls.append((match.group(1), [" ".join(a.split()) for a in args]))
    return calls


def parameter(declaration: str) -> tuple[str, str, str]:
    """("in" | "out" | "text" | "array", C type, name) of one parameter."""
    match = re.fullmatch(r"(const\s+)?(\w+)\s*(\*?)\s*(\w+)", declaration)
    if not match:
        raise ValueError(f"cannot read parameter {declaration!r}")
    const, ctype, pointer, name = match.groups()
    if not pointer:
        return "in", ctype, name
    if const:
        return ("text" if ctype == "char" else "array"), ctype, name
    return "out", ctype, name


def snake(name: str) -> str:
    return re.sub(r"(?<=[a-z0-9])(?=[A-Z])|(?<=[A-Z])(?=[A-Z][a-z])", "_", name).lower()


def read_models(root: Path) -> tuple[dict, dict, dict]:
    header = (root / "core/pelm_dev.h").read_text()
    types = {m[0]: int(m[1]) for m in re.findall(r"#define PELM_MODEL_(\w+) (\d+)", header)}
    statuses = {int(m[1]): (m[0], m[2]) for m in
                re.findall(r"#define (PELM_(?:SUCCESS|ERR_\w+)) (\d+)\s*/\* (.*?) \*/", header)}
    families: dict[str, dict] = {}
    exports = strip_comments((root / "core/pelm_exports.h").read_text())
    for macro, args in macro_calls(exports, ("PELM_MODEL_COUNT", "PELM_MODEL_COUNT_DEFAULT_ONLY",
                                             "PELM_MODEL_OP", "PELM_MODEL_OP_DEFAULT_ONLY")):
        family = args[0]
        if macro.startswith("PELM_MODEL_COUNT"):
            families[family] = {"type": types[family.removeprefix("Pelm").upper()], "ops": []}
            continue
        params = [parameter(p.strip()) for p in args[2].strip("()").split(",")]
        families[family]["ops"].append((args[1], params))
    return types, statuses, families


def read_records(root: Path, types: dict) -> dict[int, tuple[str, list]]:
    """Model type code: (record name, [(field, C type, count)])."""
    text = (root / "core/pelm_records.h").read_text()
    records = {}
    pattern = r"/\* ((?:PELM_MODEL_\w+(?: and )?)+):.*?\*/\s*typedef struct Pelm(\w+)InputRecord \{(.*?)\}"
    for models, name, body in re.findall(pattern, text, flags=re.S):
        fields = [(snake(f), t, int(n or 1)) for t, f, n in
                  re.findall(r"(\w+) (\w+)(?:\[(\d+)\])?;", strip_comments(body))]
        for model in re.findall(r"PELM_MODEL_(\w+)", models):
            records[types[model]] = (name, fields)
    return records


# The one getter whose output is an array: the key codes, as many as it counts.
KEYCODES = ("PelmKeypad", "GetKeycodes")

def constants(root: Path) -> list[tuple[str, int]]:
    """Model types and connect events (MODEL_RADIO, EVENT_ARRIVAL) and the
    simulated cockpit's displays, report kinds and faults (SIM_RADIO_LEFT)."""
    found = re.findall(r"#define PELM_((?:MODEL|EVENT)_\w+) (\d+)", (root / "core/pelm_dev.h").read_text())
    found += [("SIM_" + name, value) for name, value in
              re.findall(r"#define PELMSIM_(\w+) (\d+)", (root / "platform/sim/pelm_sim.h").read_text())]
    return [(name, int(value)) for name, value in found]


PY_TYPE = {"in": "int", "text": "str", "array": "Sequence[int]"}


def write_tables(root: Path, out: Path) -> None:
    types, statuses, families = read_models(root)
    records = read_records(root, types)
    lines = ['"""Written by write_tables.py from the C headers; do not edit."""', "",
             "# Status code: (name, what it means).", "STATUSES = {"]
    lines += [f"    {code}: {entry!r}," for code, entry in sorted(statuses.items())]
    lines += ["}", "", "# Family: (model type code, ((operation, ((kind, C type, name), ...)), ...)).",
              "FAMILIES = {"]
    for family, model in families.items():
        lines.append(f"    {family!r}: ({model['type']}, (")
        lines += [f"        ({op!r}, {tuple(params)!r})," for op, params in model["ops"]]
        lines.append("    )),")
    lines += ["}", "", "# Model type code: (record name, ((field, C type, count), ...)).", "INPUT_RECORDS = {"]
    lines += [f"    {code}: ({name!r}, {tuple(fields)!r})," for code, (name, fields) in sorted(records.items())]
    lines += ["}", "", "# Constants of the C headers, without their prefixes."]
    lines += [f"{name} = {value}" for name, value in constants(root)]
    lines += [""]
    (out / "_tables.py").write_text("\n".join(lines))

    stub = ['"""Type stub written by write_tables.py from the C headers; do not edit."""', "",
            "from typing import Any, NamedTuple, Sequence", "", "from ._panel import Panel", ""]
    for family, model in families.items():
        name = family.removeprefix("Pelm")
        methods = []
        for op, params in model["ops"]:
            inputs = [f"{snake(p)}: {PY_TYPE[kind]}" for kind, _, p in params if kind != "out"]
            outputs = [snake(p) for kind, _, p in params if kind == "out"]
            if (family, op) == KEYCODES:
                result = "tuple[int, ...]"
            elif len(outputs) > 1:
                stub += [f"class {name}{op.removeprefix('Get')}(NamedTuple):"]
                stub += [f"    {o}: int" for o in outputs] + [""]
                result = f"{name}{op.removeprefix('Get')}"
            else:
                result = "int" if outputs else "None"
            methods.append(f"    def {snake(op)}(self{''.join(', ' + i for i in inputs)}) -> {result}: ...")
        stub += [f"class {name}(Panel):", "    MODEL_TYPE: int"] + methods + [""]
    stub += ["MODEL_CLASSES: dict[int, type[Panel]]", "def model_class(model_type: int) -> type[Panel]: ...",
             "def decode_input(model_type: int, record: int) -> tuple[Any, ...]: ...", ""]
    (out / "models.pyi").write_text("\n".join(stub))


if __name__ == "__main__":
    write_tables(Path(sys.argv[1]), Path(sys.argv[2]))
