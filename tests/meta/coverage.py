"""coverage.py REPOSITORY KESTO: every text that the engine can report is produced by some case, or is listed in
unreachable.txt with the reason; every component type has its model and its cases in the files of its family, and a page of its
family in docs/components. Types and families are those of the command's catalogue."""
import json
import pathlib
import re
import subprocess
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
catalogue = json.loads(subprocess.run([sys.argv[2], "types", "--json"], capture_output=True, check=True).stdout)
types = [(code, one) for one in catalogue for code in one["codes"]]
memory = {word for name in ("driver", "set_up", "multiplier_series", "outputs", "receivers")
          for word in literals(source / f"simulation/{name}.cpp")
          if re.fullmatch(r"(Globals->)?[A-Z]\w+(\[i\]\.\w+)?|compIdNodeLink", word)}
series = {word for word in literals(source / "components/series.h") if re.fullmatch(r"[A-Z]\w+", word)}
words = {
    "kNoMemory": memory,
    "kWrongInputs": {one["tag"] for one in catalogue if not one["any_number_of_inputs"]},
    "kSeriesNotFound": series - {"Logs", "WatBod"},
    # The potentials are the library's own.
    "kNoValues": {word for word in series if not word.endswith("Pot")} | {"FreqSer"},
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

# Each type: are there a model, cases and a page in the files of its family? Junctions are the engine's driver's own.
pages = root / "docs/components"
for code, one in types:
    name, tag, family = one["name"], one["tag"], one["family"]
    isSum = family == "junctions"
    model = source / ("simulation/junctions.h" if isSum else f"components/{family}.cpp")
    if not model.exists():
        problems.append(f"{name}: no model {model.relative_to(root)}")
    cases = cases_folder / f"{family}.cases"
    used = rf"^(component \S+ |change \S+ (?:\S+ )*?type=)({tag or name}|{name}|{code}(\.\d+)?)\b"
    if not cases.exists():
        problems.append(f"{name}: no file {cases.name}")
    elif not re.search(used, read(cases), flags=re.M):
        problems.append(f"{name} ({code}): not in {cases.name}")
    page = pages / f"{family}.md"
    if not page.exists():
        problems.append(f"{name}: no page docs/components/{page.name}")
    elif not re.search(rf"\b{code}\b.*`{name}`", read(page)):
        problems.append(f"{name} ({code}): not on the page docs/components/{page.name}")
families = {one["family"] for one in catalogue}
shared = {"lookup", "head", "model"}  # what the models share
for stem in sorted({path.stem for path in (source / "components").glob("*.cpp")} - shared - families):
    problems.append(f"src/components/{stem}.cpp: no type of the catalogue has this family")

if problems:
    sys.exit("\n".join(problems))
print(f"{len(texts)} texts, {len(unreachable)} of them unreachable; {len(types)} types in {len(families)} families")
