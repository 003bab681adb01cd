"""Makes the package that cpack makes of a build, unpacks or installs it into a scratch folder, and uses what is there: the
library from a project of somebody else, by CMake and by pkg-config, and the kesto command on an installed example.

    check_package.py BUILD_FOLDER deb [--fortified]
    check_package.py BUILD_FOLDER zip --toolchain FILE --emulator WINE
"""
import argparse
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import zipfile

import check_binaries

TESTS = pathlib.Path(__file__).resolve().parents[1]
CHECK_HOST = TESTS.parent / "hosts" / "check.py"


def run(*command, **options):
    done = subprocess.run([str(part) for part in command], capture_output=True, text=True, **options)
    if done.returncode:
        sys.exit(f"{command}: exit status {done.returncode}\n{done.stdout}\n{done.stderr}")
    return done.stdout


def pack(build, generator, folder):
    run("cpack", "-G", generator.upper(), "-B", folder, "--config", build / "CPackConfig.cmake", cwd=build)
    packages = list(folder.glob(f"*.{generator}"))
    if len(packages) != 1:
        sys.exit(f"cpack made {packages}")
    print(f"{packages[0].name}: {packages[0].stat().st_size} bytes")
    return packages[0]


def install_deb(package, root):
    """Installs by dpkg into a root of its own, and says how to remove it again."""
    fields = run("dpkg-deb", "--field", package)
    print(fields.strip())
    for pattern in (r"^Package: kesto$", r"^Version: \d+\.\d+\.\d+$", r"^Architecture: amd64$", r"^Depends: .*libc6 ", r"^Depends: .*libnetcdf",
                    r"^Recommends: graphviz$"):
        if not re.search(pattern, fields, re.MULTILINE):
            sys.exit(f"the package's fields have no {pattern}")
    if "libkesto" in re.search(r"^Depends: .*$", fields, re.MULTILINE)[0].lower():
        sys.exit("the package depends on its own library")
    database = root / "var/lib/dpkg"
    for folder in (database / "info", database / "updates", database / "triggers", root / "etc", root / "bin"):
        folder.mkdir(parents=True)
    (database / "status").touch()
    # The package's scripts run outside the scratch root, which has no shell, but ldconfig is to look into it.
    ldconfig = root / "bin/ldconfig"
    ldconfig.write_text(f'#!/bin/sh\nexec /sbin/ldconfig -r "{root}"\n')
    ldconfig.chmod(0o755)
    environment = {**os.environ, "PATH": f"{root}/bin:{os.environ['PATH']}:/usr/sbin:/sbin"}

    # What the package depends on is the system's, of which the scratch root knows nothing.
    def dpkg(*arguments):
        run("dpkg", f"--root={root}", "--log=/dev/null", "--force-depends", "--force-not-root",
            "--force-script-chrootless", *arguments, env=environment)

    dpkg("--install", package)
    if "libKESTO.so.0 " not in run("/sbin/ldconfig", "-r", root, "-p"):
        sys.exit("ldconfig was not told of the library")
    return root / "usr", lambda: dpkg("--purge", "kesto")


def unpack_zip(package, root):
    with zipfile.ZipFile(package) as archive:
        archive.extractall(root)
    (prefix,) = root.iterdir()
    return prefix, lambda: None


def expect_files(prefix, names):
    missing = [name for name in names if not (prefix / name).exists()]
    if missing:
        found = "\n".join(str(path.relative_to(prefix)) for path in sorted(prefix.rglob("*")))
        sys.exit(f"not in the package: {missing}\nbut:\n{found}")


# What the pages link to for those who work on the sources, which are not in a package.
OF_SOURCES = re.compile(r"ARCHITECTURE\.md$|CONTRIBUTING\.md$|(bench|scripts|tests)(/|$)|docs/[^/]*\.py$|examples/[^/]*\.py$")


def check_links(documents):
    """Each link of the installed pages leads to a file in the package, or to sources."""
    # The other two patterns follow symbolic links.
    pages = sorted({*documents.rglob("*.md"), *documents.glob("*/*/README.md"), *documents.glob("*/README.md")})
    dead, links = [], 0
    for page in pages:
        for target in re.findall(r"\]\(([^)\s#]+)", page.read_text()):
            if "://" in target:
                continue
            links += 1
            # Not through symbolic links: the pages know their places in the source tree.
            place = pathlib.Path(os.path.normpath(page.parent / target))
            if not place.exists() and not OF_SOURCES.match(os.path.relpath(place, documents)):
                dead.append(f"{page.relative_to(documents)}: {target}")
    if dead or links < 100:
        sys.exit(f"{links} links, those that lead nowhere: {dead}")
    print(f"{len(pages)} pages, {links} links")


def consumer(prefix, folder, toolchain, emulator):
    """Builds the project of somebody else against the package and runs what it builds."""
    options = [f"-DCMAKE_PREFIX_PATH={prefix}", f"-DCMAKE_FIND_ROOT_PATH={prefix}",
               f"-DKESTO_HOSTS={prefix / 'share/kesto/hosts'}"]
    if toolchain:
        options.append(f"-DCMAKE_TOOLCHAIN_FILE={toolchain}")
    run("cmake", "-S", TESTS / "consumer", "-B", folder, "-G", "Ninja", *options)
    run("cmake", "--build", folder)
    for name in ("consumer_c", "consumer_cpp"):
        if emulator:
            # Windows looks for a library in the folder of the program first.
            (folder / "KESTO.dll").write_bytes((prefix / "bin/KESTO.dll").read_bytes())
            command = [emulator, folder / f"{name}.exe"]
        else:
            command = [folder / name]
        run(sys.executable, CHECK_HOST, *command)
        print(f"{name}: found by CMake, runs")


def by_pkg_config(prefix, folder):
    environment = {**os.environ, "PKG_CONFIG_PATH": str(prefix / "lib/pkgconfig")}
    flags = run("pkg-config", "--cflags", "--libs", "kesto", env=environment).split()
    program = folder / "by_pkg_config"
    run("cc", prefix / "share/kesto/hosts/c/host.c", *flags, f"-Wl,-rpath,{prefix / 'lib'}", "-o", program)
    run(sys.executable, CHECK_HOST, program)
    print("pkg-config: runs")


def installed_python(prefix):
    environment = {**os.environ, "PYTHONPATH": str(prefix / "lib/python3/dist-packages"), "PYTHONDONTWRITEBYTECODE": "1",
                   "KESTO_LIBRARY": str(prefix / "lib/libKESTO.so.0")}
    run(sys.executable, CHECK_HOST, sys.executable, prefix / "share/kesto/hosts/python/host.py", env=environment)
    # The package finds the command of its own prefix.
    environment.pop("KESTO", None)
    model = prefix / "share/kesto/examples/rainwater-house/model.toml"
    title = run(sys.executable, "-c", "import kesto, sys; from kesto import command; print(command.find());"
                                      "print(kesto.load(sys.argv[1]).title)", model, env=environment)
    if title.splitlines() != [str(prefix / "bin/kesto"), "House with a rainwater tank"]:
        sys.exit(f"the installed Python package: {title}")
    # The system's own Python has what the package needs to read results.
    code = "import kesto, sys; print(kesto.load(sys.argv[1]).run(record='tank:overflow').flows.sizes['time'])"
    if (days := run("/usr/bin/python3", "-c", code, model, env=environment).strip()) != "1461":
        sys.exit(f"the installed Python package reads {days} days")
    print("Python: runs")


def in_shell(emulator, line, **options):
    # The shell's path: wine gives a bare name to a helper, which is a process more.
    command = [emulator, r"C:\windows\system32\cmd.exe", "/c", line]
    done = subprocess.run(command, capture_output=True, text=True, **options)
    # One in some thousand processes dies under wine 8 before it begins, on a busy machine.
    if "Internal error" in done.stdout + done.stderr:
        print(f"once more: {line}")
        done = subprocess.run(command, capture_output=True, text=True, **options)
    if done.returncode:
        sys.exit(f"{line}: exit status {done.returncode}\n{done.stdout}\n{done.stderr}")


def windows_section(prefix, folder, emulator):
    """README's commands for Windows, to the letter, with the package's bin on PATH."""
    section = re.search(r"^## On Windows$.*?```bat\n(.*?)```", (prefix / "share/kesto/README.md").read_text(), re.MULTILINE | re.DOTALL)
    environment = {**os.environ, "WINEPATH": f"Z:{prefix / 'bin'}".replace("/", "\\")}
    for line in section[1].splitlines():
        in_shell(emulator, line, cwd=folder, env=environment)
    if not (folder / "results/flows.csv").stat().st_size or b"uPlot" not in (folder / "report.html").read_bytes():
        sys.exit("README's commands left no results, or a page without charts")
    print(f"README on Windows: {len(section[1].splitlines())} commands run")
    schema = (prefix / "share/kesto/kesto.schema.json").read_bytes()
    if schema != subprocess.run([emulator, prefix / "bin/kesto.exe", "schema"], capture_output=True, check=True).stdout:
        sys.exit("kesto.schema.json is not what the command prints")


def installed_command(prefix, folder):
    model = prefix / "share/kesto/examples/rainwater-house/model.toml"
    output = run(prefix / "bin/kesto", "run", model, "-o", folder / "results")
    run(prefix / "bin/kesto", "run", "-q", model, "-o", folder / "netcdf", "--format", "netcdf")
    run(prefix / "bin/kesto", "report", folder / "netcdf", "-o", folder / "page.html")
    if not output.strip() or not any((folder / "results").iterdir()):
        sys.exit("the installed command wrote nothing")
    # The library is the installed one, by whatever way the loader came to it.
    loaded = run("ldd", prefix / "bin/kesto")
    library = re.search(r"libKESTO\.so\.0 => (\S+)", loaded)[1]
    if pathlib.Path(library).resolve().parent != (prefix / "lib").resolve():
        sys.exit(f"the installed command loads {library}")
    print("kesto: runs an installed example")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("kind", choices=["deb", "zip"])
    parser.add_argument("--fortified", action="store_true")
    parser.add_argument("--toolchain")
    parser.add_argument("--emulator")
    arguments = parser.parse_args()
    common = ["include/kesto/AUEglobals.h", "lib/cmake/KESTO/KESTOConfig.cmake", "lib/pkgconfig/kesto.pc",
              "share/kesto/examples/rainwater-house/model.toml"]
    with tempfile.TemporaryDirectory() as scratch:
        scratch = pathlib.Path(scratch)
        folders = [scratch / name for name in ("package", "root", "consumer", "work")]
        for folder in folders:
            folder.mkdir()
        package = pack(arguments.build, arguments.kind, folders[0])
        if arguments.kind == "deb":
            prefix, remove = install_deb(package, folders[1])
            expect_files(prefix, common + ["bin/kesto", "lib/libKESTO.so", "lib/libKESTO.so.0", "lib/kesto/kesto_netcdf.so", "share/man/man1/kesto.1",
                                           "share/bash-completion/completions/kesto"])
            check_links(prefix / "share/doc/kesto")
            if wrong := check_binaries.check(prefix, arguments.fortified):
                sys.exit("\n".join(wrong))
            by_pkg_config(prefix, folders[3])
            installed_python(prefix)
            installed_command(prefix, folders[3])
        else:
            prefix, remove = unpack_zip(package, folders[1])
            expect_files(prefix, common + ["bin/KESTO.dll", "bin/kesto.exe", "lib/libKESTO.dll.a", "lib/KESTO.def", "share/kesto/README.md",
                                           "share/kesto/docs/guide/windows.md", "share/kesto/hosts/c/host.c", "share/kesto/kesto.schema.json"])
            check_links(prefix / "share/kesto")
            windows_section(prefix, folders[3], arguments.emulator)
        consumer(prefix, folders[2], arguments.toolchain, arguments.emulator)
        remove()
        if arguments.kind == "deb" and prefix.exists():
            sys.exit(f"left behind: {list(prefix.rglob('*'))}")


main()
