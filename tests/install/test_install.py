"""The program as it is installed and packaged, run in a root of its own with nothing else in it."""

import os
import pathlib
import re
import shutil
import subprocess

import pytest

from conftest import BUILD, needs_root

SOURCE = pathlib.Path(os.environ["SONAPROBE_SOURCE_DIR"])
SAMPLE = "/usr/share/doc/sonaprobe/docs/sample/playback-dropout.raw"
FOLDERS = ("images", "sample", "schema")
# Where each plugin's program looks for it, below the folder of its library.
PLUGINS = {name: f"{name}/plugins/{file}" for name, file in {
    "babeltrace2": "babeltrace-plugin-sonaprobe.so", "kernelshark": "plugin-sonaprobe.so"}.items()
           if (BUILD / "plugins" / name / file).exists()}
INSTALLED = {
    "sbin/sonaprobe", "sbin/sonaprobe-sim",
    "bin/sonascope", "share/man/man1/sonascope.1.gz",
    "share/bash-completion/completions/sonascope", "share/fish/vendor_completions.d/sonascope.fish",
    "share/man/man5/sonaprobe.raw.5.gz",
    "share/man/man8/sonaprobe.8.gz", "share/man/man8/sonaprobe-sim.8.gz",
    "share/bash-completion/completions/sonaprobe",
    "share/bash-completion/completions/sonaprobe-sim",
    *(f"share/doc/{package}/{name}" for package in ("sonaprobe", "libsonaprobe-dev")
      for name in ("copyright", "changelog.gz")),
    "share/lintian/overrides/sonaprobe", "share/lintian/overrides/libsonaprobe-dev",
    *(f"share/doc/sonaprobe/{name}" for name in ("README.md", "CHANGELOG.md", "CONTRIBUTING.md")),
    *(f"share/doc/sonaprobe/docs/{page.name}" for page in (SOURCE / "docs").glob("*.md")),
    *(f"share/doc/sonaprobe/docs/{folder}/{file.name}" for folder in FOLDERS
      for file in (SOURCE / "docs" / folder).iterdir()),
    "include/sonaprobe/sonaprobe.h", "share/doc/sonaprobe/examples/failures.c",
    "lib/libsonaprobe.so", "lib/libsonaprobe.so.1", "lib/libsonaprobe.so.1.0.0",
    "lib/pkgconfig/sonaprobe.pc", "lib/cmake/sonaprobe/sonaprobe-config.cmake",
    "lib/cmake/sonaprobe/sonaprobe-config-version.cmake",
    "lib/cmake/sonaprobe/sonaprobe-config-relwithdebinfo.cmake",
}


def run(*command, **options):
    return subprocess.run(command, check=True, text=True, capture_output=True,
                          stdin=subprocess.DEVNULL, **options)


def files_below(root):
    return {str(path.relative_to(root)) for path in root.rglob("*") if not path.is_dir()}


@pytest.fixture(scope="module")
def packages(tmp_path_factory):
    folder = tmp_path_factory.mktemp("package")
    run("cpack", "--config", BUILD / "CPackConfig.cmake", "-B", folder)
    return {package.name.split("_")[0]: package for package in folder.glob("*.deb")}


@pytest.fixture(scope="module")
def package(packages):
    assert packages.keys() == {"sonaprobe", "libsonaprobe-dev",
                               *(f"sonaprobe-{name}" for name in PLUGINS)}
    return packages["sonaprobe"]


@pytest.fixture
def root(package, tmp_path):
    """A root folder with the package's files, and the libraries that its dependencies bring."""
    root = tmp_path / "root"
    run("dpkg-deb", "-x", package, root)
    libraries = re.findall(r"(/\S+) \(0x", run("ldd", root / "usr/sbin/sonaprobe").stdout)
    for library in libraries:
        target = root / library.lstrip("/")
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(library, target)
    return root


def in_root(root, *command):
    return subprocess.run(["chroot", root, *command], check=False, text=True, capture_output=True,
                          stdin=subprocess.DEVNULL)


@pytest.mark.parametrize("prefix, zsh, etc", [
    ("/usr", "vendor-completions", "/etc"), ("/opt/tools", "site-functions", "/opt/tools/etc")])
def test_install_puts_each_file_where_it_is_looked_for(prefix, zsh, etc, tmp_path):
    run("cmake", "--install", BUILD, "--prefix", prefix, env=os.environ | {"DESTDIR": tmp_path})
    functions = {f"share/zsh/{zsh}/_sonaprobe", f"share/zsh/{zsh}/_sonaprobe-sim",
                 f"share/zsh/{zsh}/_sonascope"}
    lnav_format = tmp_path / etc.lstrip("/") / "lnav/formats/sonascope/sonascope.json"
    assert lnav_format.read_text() == (SOURCE / "plugins/lnav/sonascope.json").read_text()
    lnav_format.unlink()
    installed = files_below(tmp_path / prefix.lstrip("/"))
    of_plugins = {file for file in installed if file.endswith(tuple(PLUGINS.values()))}
    assert len(of_plugins) == len(PLUGINS)
    of_plugins |= {f"share/doc/sonaprobe-{name}/{file}" for name in PLUGINS
                   for file in ("copyright", "changelog.gz")}
    assert installed == INSTALLED | functions | of_plugins
    manual = run("zcat", tmp_path / prefix.lstrip("/") / "share/man/man8/sonaprobe.8.gz").stdout
    assert manual == (SOURCE / "man/sonaprobe.8").read_text()


def test_the_links_of_installed_pages_lead_somewhere(tmp_path):
    run("cmake", "--install", BUILD, "--prefix", "/usr", env=os.environ | {"DESTDIR": tmp_path})
    pages = sorted((tmp_path / "usr/share/doc/sonaprobe").rglob("*.md"))
    dead = [f"{page.name}: {link}" for page in pages
            for link in re.findall(r"\]\(([^)#\s]+)", page.read_text())
            if not (page.parent / link).exists()]
    assert pages and dead == []


@needs_root
def test_the_packages_program_reads_the_packages_sample(root):
    result = in_root(root, "/usr/sbin/sonaprobe", "-k", "-A", "-r", SAMPLE)
    assert (result.stderr, result.returncode) == ("", 0)
    lines = result.stdout.splitlines()
    assert sum("QuorraHAL::OVERLOAD" in line for line in lines) == 1
    assert len(lines) > 1000


@needs_root
def test_the_packages_simulator_writes_a_trace_for_its_program(root):
    (root / "tmp").mkdir()
    assert in_root(root, "/usr/sbin/sonaprobe-sim", "write", "usb", "/tmp/usb.raw").returncode == 0
    result = in_root(root, "/usr/sbin/sonaprobe", "-k", "-r", "/tmp/usb.raw")
    assert "OrvelUSBAudioDevice::" in result.stdout


def test_the_package_depends_on_the_libraries_it_needs(package):
    [names] = re.findall(r"^Depends: (.*)$", run("dpkg-deb", "-f", package).stdout, re.MULTILINE)
    assert {name.split()[0] for name in names.split(", ")} == {
        "libc6", "libgcc-s1", "libisal2", "libsqlite3-0", "libstdc++6", "libzstd1", "zlib1g"}


@pytest.mark.parametrize("name, library", [("babeltrace2", "libbabeltrace2-0"),
                                           ("kernelshark", "libkshark2")])
def test_a_plugins_package_has_it_where_its_program_looks(name, library, packages, tmp_path):
    if name not in PLUGINS:
        pytest.skip(f"built without the plugin for {name}")
    package = packages[f"sonaprobe-{name}"]
    run("dpkg-deb", "-x", package, tmp_path)
    [folder] = {pathlib.Path(file).parent for file in run("dpkg", "-L", library).stdout.split()
                if re.search(r"/lib(babeltrace2|kshark)\.so\.", file)}
    assert (tmp_path / str(folder).lstrip("/") / PLUGINS[name]).is_file()
    depends = run("dpkg-deb", "-f", package, "Depends").stdout
    assert {name.split()[0] for name in depends.split(", ")} == {
        library, "libc6", "libgcc-s1", "libstdc++6"}


@pytest.mark.skipif(shutil.which("lintian") is None, reason="needs lintian")
def test_the_packages_are_clean(packages):
    checked = subprocess.run(["lintian", "--allow-root", "--fail-on", "error,warning",
                              *packages.values()],
                             check=False, text=True, capture_output=True)
    assert (checked.stdout, checked.returncode) == ("", 0)
