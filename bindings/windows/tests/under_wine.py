#!/usr/bin/env python3
"""Runs clients of the Windows component under a Wine of their own, without a display.

under_wine.py FOLDER start BIN       make the prefix, start its server, register the libraries in BIN
under_wine.py FOLDER stop            end the server
under_wine.py FOLDER run PROGRAM...  run a program; its exit code counts
under_wine.py FOLDER script FILE...  run a script; only a script that ends with WScript.Quit 42 has passed
under_wine.py FOLDER fresh BIN       hold registration and unregistration to a prefix that knows nothing

--instrument SERVER before the action serves an instrument meanwhile: PORT in the arguments is its TCP port, and
COM8 of the prefix its serial line.
"""

import contextlib
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

PASSED = 42  # cscript gives 0 for a script that failed


class Wine:
    def __init__(self, folder, prefix="prefix"):
        self.folder = pathlib.Path(folder).absolute()
        self.prefix = self.folder / prefix
        self.home = self.folder / "home"
        self.temporary = self.folder / "tmp"
        for made in (self.home, self.temporary):
            made.mkdir(parents=True, exist_ok=True)
        self.environment = {
            name: value for name, value in os.environ.items() if name not in ("DISPLAY", "WAYLAND_DISPLAY")
        } | {
            "WINEPREFIX": str(self.prefix),
            "WINEARCH": "win64",
            "WINEDEBUG": "-all",
            "WINEDLLOVERRIDES": "mscoree,mshtml=;winedbg.exe=d",
            "HOME": str(self.home),
            "TMPDIR": str(self.temporary),
            "QHOST_CLOCK": "virtual",
        }

    def quietly(self, *command):
        """The first programs of a session keep their output open for ever: give them none."""
        return subprocess.run(command, env=self.environment, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL, timeout=120, check=False).returncode

    def run(self, *command, timeout=120, **environment):
        return subprocess.run(("wine", *command), env=self.environment | environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=timeout, check=False)

    def make(self):
        if (self.prefix / "system.reg").exists():
            return
        self.quietly("wine", "wineboot", "-i")
        self.quietly("wineserver", "-k")
        if not (self.prefix / "system.reg").exists():
            sys.exit("the Wine prefix could not be made: is the package wine64 there?")

    def start(self):
        self.quietly("wineserver", "-p120")
        self.quietly("wine", "cmd", "/c", "exit")

    def stop(self):
        self.quietly("wineserver", "-k")

    def copy(self, name):
        """A prefix like this one, at the price of its registry."""
        other = Wine(self.folder, name)
        shutil.rmtree(other.prefix, ignore_errors=True)
        shutil.copytree(self.prefix, other.prefix, symlinks=True, copy_function=os.link)
        for registry in self.prefix.glob("*.reg"):
            (other.prefix / registry.name).unlink()
            shutil.copyfile(registry, other.prefix / registry.name)
        return other


def windows_path(path):
    return "Z:" + str(pathlib.Path(path).absolute()).replace("/", "\\")


def register(wine, folder, *options):
    for name in ("QKEL4x.dll", "QHost.dll"):
        code = wine.run("regsvr32", "/s", *options, windows_path(pathlib.Path(folder) / name)).returncode
        if code != 0:
            sys.exit(f"regsvr32 {' '.join(options)} {name} ended with {code}")


def registry(wine):
    """All keys and values of both classes hives, as texts."""
    lines = []
    for hive in ("HKLM\\Software\\Classes", "HKCU\\Software\\Classes"):
        lines += wine.run("reg", "query", hive, "/s").stdout.decode("cp437").splitlines()
    return [line for line in lines if line.strip()]


OURS = ("QKEL4x", "QHost", "QPort", "QAppInt", "QAppPar", "2F1B5C84", "6D0B7A52")


def traces(wine):
    return [line for line in registry(wine) if any(name.lower() in line.lower() for name in OURS)]


def fresh(wine, folder):
    """Nothing before, everything after registering, nothing after unregistering; for the machine and the user."""
    wine.make()
    copy = wine.copy("prefix-registration")
    try:
        copy.start()
        copy.run("reg", "delete", "HKCU\\Software\\Classes", "/f")
        register(copy, folder, "/u")
        if traces(copy):
            sys.exit("the prefix was not clean before the test:\n" + "\n".join(traces(copy)))
        before = set(registry(copy))
        for options, hive, other in (((), "HKEY_LOCAL_MACHINE", "HKEY_CURRENT_USER"),
                                     (("/n", "/i:user"), "HKEY_CURRENT_USER", "HKEY_LOCAL_MACHINE")):
            register(copy, folder, *options)
            keys = [line for line in traces(copy) if line.startswith("HKEY_")]
            if any(key.startswith(other) for key in keys):
                sys.exit(f"regsvr32 {options} wrote to {other}")
            for wanted in ("QKEL4x.clsKEL4x\\CLSID", "QKEL4x.clsRegister\\CLSID", "QKEL4x.clsStatistics\\CLSID",
                           "QPort.clsEthernet\\CLSID", "QAppPar.ParameterNode\\CLSID", "QHost.Application\\CLSID",
                           "\\InprocServer32", "\\ProxyStubClsid32", "\\1.0\\0\\win64", "\\HELPDIR"):
                if not any(key.startswith(hive) and wanted.lower() in key.lower() for key in keys):
                    sys.exit(f"after regsvr32 {options} there is no {wanted} in {hive}")
            created = script(copy, pathlib.Path(__file__).parent / "scripts" / "creates.vbs")
            if created != 0:
                sys.exit(f"after regsvr32 {options} the classes cannot be created by name")
            register(copy, folder, "/u")
            left = set(registry(copy)) - before
            if left:
                sys.exit("unregistering left behind:\n" + "\n".join(sorted(left)))
        return 0
    finally:
        copy.stop()
        shutil.rmtree(copy.prefix, ignore_errors=True)


def script(wine, file, *arguments):
    # A script file is opened without sharing: each run has its own copy.
    with tempfile.TemporaryDirectory(dir=wine.temporary) as folder:
        copy = shutil.copy(file, folder)
        ended = wine.run("cscript", "//nologo", windows_path(copy), *arguments,
                         WINEDEBUG="-all,fixme+wscript,fixme+vbscript,fixme+jscript")
    sys.stdout.write(ended.stdout.decode("cp437").replace("\r", ""))
    if ended.returncode == PASSED:
        return 0
    sys.stdout.write(ended.stderr.decode(errors="replace"))
    print(f"{file} ended with {ended.returncode}, not with {PASSED}: it failed")
    return 1


@contextlib.contextmanager
def instrument(wine, server):
    if server is None:
        yield ""
        return
    with subprocess.Popen([server], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True) as process:
        port, terminal = process.stdout.readline().split()
        line = wine.prefix / "dosdevices" / "com8"
        line.unlink(missing_ok=True)
        line.symlink_to(terminal)
        try:
            yield port
        finally:
            line.unlink(missing_ok=True)
            process.stdin.close()


def main(arguments):
    wine = Wine(arguments[0])
    server = None
    if arguments[1] == "--instrument":
        server = arguments[2]
        del arguments[1:3]
    action, rest = arguments[1], arguments[2:]
    if action == "start":
        wine.make()
        wine.start()
        register(wine, rest[0])
        return 0
    if action == "stop":
        wine.stop()
        return 0
    if action == "fresh":
        return fresh(wine, rest[0])
    with instrument(wine, server) as port:
        rest = [port if argument == "PORT" else argument for argument in rest]
        if action == "script":
            return script(wine, *rest)
        ended = wine.run(*rest)
        sys.stdout.write((ended.stdout + ended.stderr).decode(errors="replace").replace("\r", ""))
        if ended.returncode != 0:
            print(f"{rest[0]} ended with {ended.returncode}")
        return 0 if ended.returncode == 0 else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
