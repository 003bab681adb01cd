"""coverage.py REPOSITORY: every text that the engine can report is produced by some case, or is listed in
unreachable.txt with the reason; every component type has cases in the file of its family, and a page of its family in
docs/components where that folder exists."""
import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])
source = root / "src"
cases_folder = root / "tests/cases"
problems = []


def read(path):
    return path.read_text(encoding="utf-8")


def literals(path):
    """String literals of a file, without those of #include."""
    code = re.sub(r"^#include.*$|//.*$", "", read(path), flags=re.M)
    return re.findall(r'"((?:[^"\\]|\\.)*)"', code)


# What the cases produce.
outcomes = set()
for path in cases_folder.glob("*.cases"):
    outcomes.update(re.findall(r'^run .*?(?:fails|aborts) "([^"]*)"', read(path), flags=re.M))

unreachable = {}
for line in read(root / "tests/meta/unreachable.txt").splitlines():
    if line and not line.startswith("#"):
        text, reason = (part.strip() for part in line.split("|"))
        if not reason:
            problems.append(f"no reason given: {text}")
        unreachable[text] = reason

# What the engine can report: the formats of errors.h, with the words that stand for %s.
formats = dict(re.findall(r'constexpr char (k\w+)\[\] = "([^"]*)";', read(source / "errors.h")))
dispatch = read(source / "simulation/dispatch.cpp")
codes = dict(re.findall(r"(k\w+) = (\d+);", read(source / "components/type_codes.h")))
appliance = "".join(re.findall(r"return \{kind, (.*)\};", dispatch))
rows = re.sub(r"^    appliance\((.*)\),$", rf"    {{\1, {appliance}}},", dispatch, flags=re.M)
types = [(int(codes.get(code, code)), tag, inputs, calls)
         for code, tag, inputs, calls in re.findall(r'^    \{(?:code::)?(\w+), "(\w\w)", (\w+), (.*)\},$', rows, flags=re.M)]
memory = {word for name in ("driver", "multiplier_series", "outputs", "receivers")
          for word in literals(source / f"simulation/{name}.cpp")
          if re.fullmatch(r"(Globals->)?[A-Z]\w+(\[i\]\.\w+)?|compIdNodeLink", word)}
series = {word for word in literals(source / "components/series.h") if re.fullmatch(r"[A-Z]\w+", word)}
words = {
    "kNoMemory": memory,
    "kWrongInputs": {tag for _, tag, inputs, _ in types if inputs != "kAnyInputs"},
    "kSeriesNotFound": series - {"Logs", "WatBod"},
    "kRecordNotFound": {"Logs", "WatBod"},
}
texts = set()
for name, text in formats.items():
    if name in words:
        texts.update(text.replace("%s", word, 1) for word in words[name])
    else:
        texts.add(text)
for path in source.rglob("*.cpp"):
    texts.update(re.findall(r'invariant\([^"\n]*"([^"]*)"', read(path)))

# Guards against this script going blind.
for what, found, least in (("formats", formats, 25), ("types", types, 50), ("series", words["kSeriesNotFound"], 18),
                           ("memory", memory, 20), ("cases' outcomes", outcomes, 100)):
    if len(found) < least:
        problems.append(f"only {len(found)} {what} found: has the source changed its form?")

for text in sorted(texts):
    pattern = re.compile(re.escape(text).replace("%d", r"-?\d+"))
    produced = any(pattern.fullmatch(outcome) for outcome in outcomes)
    if not produced and text not in unreachable:
        problems.append(f"no case produces: {text}")
    if produced and text in unreachable:
        problems.append(f"listed as unreachable, but a case produces it: {text}")
for text in unreachable:
    if text not in texts:
        problems.append(f"listed as unreachable, but the engine has no such text: {text}")
for outcome in sorted(outcomes):
    if not any(re.fullmatch(re.escape(text).replace("%d", r"-?\d+"), outcome) for text in texts):
        if outcome != "left by the host":
            problems.append(f"a case expects a text that the engine does not have: {outcome}")

# Each type: which family defines its forms, and are there cases and a page?
families = {form: path.stem
            for path in (source / "components").glob("*.cpp")
            for form in re.findall(r"^const Form (\w+) =", read(path), flags=re.M)}
pages = root / "docs/components"
for code, tag, _, calls in types:
    forms = re.findall(r"&(\w+)", calls)
    own = [form for form in forms if not form.startswith("CopyIn")] or forms
    stems = {families[form] for form in own if form in families}
    if len(stems) != 1:
        problems.append(f"type {code} ({tag}): defined in {sorted(stems)}")
        continue
    family = stems.pop()
    path = cases_folder / f"{family}.cases"
    used = rf"^(component \S+ |change \S+ (?:\S+ )*?type=)({tag}|{code}(\.\d+)?)\b"
    if not path.exists():
        problems.append(f"type {code} ({tag}): no file {path.name}")
    elif not re.search(used, read(path), flags=re.M):
        problems.append(f"type {code} ({tag}): not in {path.name}")
    if pages.is_dir():
        page = pages / f"{family}.md"
        if not page.exists():
            problems.append(f"type {code} ({tag}): no page docs/components/{family}.md")
        elif not re.search(rf"\b{code}\b", read(page)):
            problems.append(f"type {code} ({tag}): not on the page docs/components/{family}.md")

if problems:
    sys.exit("\n".join(problems))
print(f"{len(texts)} texts, {len(unreachable)} of them unreachable; {len(types)} types in {len(set(families.values()))} families")
