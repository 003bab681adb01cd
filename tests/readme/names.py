"""What the pages of the repository name is there: files and folders, options of programs and of the build, presets with
their compiler flags, and the names that .clang-tidy lets pass.

    names.py REPOSITORY BUILD_FOLDER [KESTO]
"""
import json
import pathlib
import re
import shlex
import subprocess
import sys

root, build = map(pathlib.Path, sys.argv[1:3])
kesto = sys.argv[3] if len(sys.argv) > 3 else None
PAGES = ["README.md", "ARCHITECTURE.md", "CONTRIBUTING.md", "hosts/README.md", "bench/README.md", "tests/cases/README.md",
         "tests/fuzz/README.md", *sorted(str(path.relative_to(root)) for path in root.glob("docs/**/*.md"))]
FENCED = re.compile(r"^```.*?^```$", flags=re.MULTILINE | re.DOTALL)
SCRIPTS = ["test", "demo", *(f"scripts/{name}" for name in ("changed", "coverage", "fresh", "install"))]
problems = []


def read(path):
    return (root / path).read_text(encoding="utf-8")


def output(*command):
    return subprocess.run(command, cwd=root, check=True, capture_output=True, text=True).stdout


def is_ignored(path):
    return subprocess.run(["git", "check-ignore", "-q", path], cwd=root).returncode == 0


tracked = output("git", "ls-files", "--cached", "--others", "--exclude-standard").split("\n")
# Each file and folder under each ending of its path: pages name them from where the reader is.
places = set()
for file in tracked:
    parts = file.split("/")
    for end in range(1, len(parts) + 1):
        places.update("/".join(parts[begin:end]) for begin in range(end))
folders = {name.split("/")[0] for name in tracked if "/" in name}
ENDINGS = "|".join(sorted({re.escape(pathlib.Path(name).suffix) for name in tracked if "." in pathlib.Path(name).name[1:]}))


def check_paths(page, text):
    for link in re.findall(r"\]\(([^)#:]+)(?:#[^)]*)?\)", text):
        if not ((root / page).parent / link).exists():
            problems.append(f"{page} links to {link}, which is not there")
    blocks = "".join(re.findall(FENCED, text))
    # In backticks: what ends like a folder or a file, or begins with a folder.
    for word in re.findall(r"`([^`\s]+)`", re.sub(FENCED, "", text)):
        path = word.removeprefix("./").rstrip("/")
        looks_like = re.fullmatch(r"[\w.+-]+(/[\w.+-]+)*", path) and (
            word.endswith("/") or re.search(rf"\w({ENDINGS})$", path) or "/" in path and path.split("/")[0] in folders)
        if "/" not in word and "/" in page:
            continue  # a file of the reader's, mostly
        # What a page shows how to make is not there before.
        if looks_like and path not in places and path not in blocks and not is_ignored(path):
            problems.append(f"{page} names {word}, which is not there")


def commands_of_kesto():
    """The words of `kesto --help` that name a command."""
    listed = output(kesto, "--help").split("Subcommands:", 1)
    return re.findall(r"^  (\w+) ", listed[-1], flags=re.MULTILINE)


def check_options(page, text, known):
    # An option that stands alone, or after a program of this repository.
    programs = r"kesto|\./test|scripts/\w+"
    for code in re.findall(r"`([^`\n]+)`", text):
        if not re.match(rf"(--[a-z]|({programs})\b)", code.removeprefix("build/release/")):
            continue
        for option in re.findall(r"(?<![\w-])--[a-z][a-z-]*", code):
            if option not in known:
                problems.append(f"{page}: `{code}`: no program here has {option}")


def check_build_options(page, text):
    for name in sorted(set(re.findall(r"\bKESTO_[A-Z_]+\b", text))):
        if not re.search(rf"\b{name}\b", everything_but_pages):
            problems.append(f"{page} names {name}, which nothing knows")


def check_presets():
    """The presets of CONTRIBUTING's table are all there are, and say how the compiler optimises."""
    presets = json.loads(read("CMakePresets.json"))["configurePresets"]
    names = {preset["name"] for preset in presets if not preset.get("hidden")}
    table = read("CONTRIBUTING.md").split("| preset |", 1)[1].split("\n\n", 1)[0]
    rows = dict(re.findall(r"^\| `(\w+)` \| (.*) \|$", table, flags=re.MULTILINE))
    if set(rows) != names:
        problems.append(f"CONTRIBUTING.md has the presets {sorted(rows)}, CMakePresets.json {sorted(names)}")
    if build.name not in names:
        return
    levels = set()
    for entry in json.loads((build / "compile_commands.json").read_text()):
        if pathlib.Path(entry["file"]).is_relative_to(root / "src"):
            flags = [word for word in shlex.split(entry["command"]) if re.fullmatch(r"-O\w*", word)]
            levels.add(flags[-1] if flags else "-O0")
    titles = {preset["name"]: preset["displayName"] for preset in presets if "displayName" in preset}
    for place, text in (("CONTRIBUTING.md", rows.get(build.name, "")), ("CMakePresets.json", titles.get(build.name, ""))):
        said = re.findall(r"-O\w", text)
        if said and not levels <= set(said):
            problems.append(f"{place}: preset {build.name} says {said}, the engine is compiled with {sorted(levels)}")


def alternatives(pattern):
    """The alternatives of a regular expression, its groups multiplied out."""
    group = re.search(r"\(([^()]*)\)", pattern)
    if group:
        chosen = [pattern[:group.start()] + inner + pattern[group.end():] for inner in group[1].split("|")]
        # Alternatives outside the group stand in each of them.
        return sorted({one for whole in chosen for one in alternatives(whole)})
    return pattern.split("|")


def check_clang_tidy():
    text = read(".clang-tidy")
    code = "\n".join(read(name) for name in tracked if re.match(r"(src|command)/.*\.(h|cpp)$", name))
    words = set(re.findall(r"\w+", re.sub(r'//.*|"(?:[^"\\\n]|\\.)*"', "", code)))
    for key, pattern in re.findall(r"identifier-naming\.(\w+)IgnoredRegexp,\s*value: '([^']*)'", text):
        for one in alternatives(pattern):
            if not any(re.fullmatch(one, word) for word in words):
                problems.append(f".clang-tidy: {key} {one} lets nothing pass that is there")
    for folder in re.search(r"HeaderFilterRegex: '/\(([^)]*)\)/'", text)[1].split("|"):
        if not (root / folder).is_dir():
            problems.append(f".clang-tidy: no folder {folder}")


everything_but_pages = "\n".join(
    read(name) for name in tracked
    if name and not name.endswith(".md") and re.search(r"(^|/)(CMake[^/]*|test|demo|run|\w+\.(cmake|py|cpp|h|json|mjs))$", name)
    and (root / name).is_file())
known = {option for name in SCRIPTS for option in re.findall(r"--[a-z][a-z-]*", read(name))}
if kesto:
    helps = [output(kesto, "--help"), *(output(kesto, name, "--help") for name in commands_of_kesto())]
    known.update(option for text in helps for option in re.findall(r"--[a-z][a-z-]*", text))
for page in PAGES:
    content = read(page)
    check_paths(page, content)
    check_build_options(page, content)
    if kesto:
        check_options(page, re.sub(FENCED, "", content), known)
check_presets()
check_clang_tidy()

if problems:
    sys.exit("\n".join(problems))
print(f"{len(PAGES)} pages name nothing that is not there")
