#!/usr/bin/env python3
"""Runs clients of the Windows component under a Wine of their own, without a display.

under_wine.py FOLDER start BIN       make the prefix, start its server, register the libraries in BIN
under_wine.py FOLDER stop            end the server
under_wine.py FOLDER run PROGRAM...  run a program; its exit code counts
under_wine.py FOLDER script FILE...  run a script; only a script that ends with WScript.Quit 42 has passed
under_wine.py FOLDER picture PROGRAM...
                                     run a program with the name of a PNG file as its last argument and look at it
under_wine.py FOLDER trace PROGRAM...
                                     run a program with QKEL4X_TRACE_FILE set and look at what it recorded
under_wine.py FOLDER fresh BIN       hold registration and unregistration to a prefix that knows nothing

--instrument SERVER before the action serves an instrument meanwhile: PORT in the arguments stands for its TCP port, and
COM8 of the prefix is its serial line.
"""

import contextlib
import json
import os
import pathlib
import shutil
import struct
import subprocess
import sys
import tempfile
import zlib

PASSED = 42  # cscript gives 0 for a script that failed
# On a 32-bit system, which tools/check-windows-x86 makes, Wine is a 32-bit one.
BITS = "win64" if sys.maxsize > 2**32 else "win32"


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
            "WINEARCH": BITS,
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
    """All values of the machine's and the user's classes, by hive and key. Ends the server, which writes them."""
    wine.stop()
    found = {}
    for file, hive in (("system.reg", "machine"), ("user.reg", "user")):
        key = None
        for line in (wine.prefix / file).read_text(encoding="utf-8", errors="replace").splitlines():
            if line.startswith("["):
                name = line[1:line.rindex("]")].replace("\\\\", "\\").lower()
                key = (hive, name.removeprefix("software\\classes\\")) if "\\classes\\" in name else None
                if key:
                    found[key] = []
            elif key and line and not line.startswith("#"):
                found[key].append(line)
    wine.start()
    return found


def fresh(wine, folder):
    """Nothing before, everything after registering, nothing after unregistering; for the machine and the user."""
    wine.make()
    copy = wine.copy("prefix-registration")
    creates = pathlib.Path(__file__).parent / "scripts" / "creates.vbs"
    try:
        copy.start()
        register(copy, folder, "/u")
        # The script host registers classes of its own when it first runs, so this comes before the snapshot.
        if script(copy, creates, quiet=True) == 0:
            sys.exit("the classes can be created before they are registered")
        before = registry(copy)
        assembly = copy.run(str(pathlib.Path(folder) / "assembly_client.exe"))
        if assembly.returncode != 0:
            sys.exit("the manifest alone does not do: " + assembly.stdout.decode(errors="replace"))
        for options, hive in (((), "machine"), (("/n", "/i:user"), "user")):
            register(copy, folder, *options)
            after = registry(copy)
            added = {key: values for key, values in after.items() if key not in before}
            if any(key[0] != hive for key in added):
                sys.exit(f"regsvr32 {options} wrote beyond the {hive}'s classes")
            keys = [key[1] for key in added]
            for wanted in ("qkel4x.clskel4x\\clsid", "qkel4x.clsregister\\clsid", "qkel4x.clsstatistics\\clsid",
                           "qport.clsethernet\\clsid", "qappint.hostruntime\\clsid", "qapppar.parameternode\\clsid",
                           "qhost.application\\clsid", "\\inprocserver32", "\\proxystubclsid32",
                           f"\\1.0\\0\\{BITS}", "\\helpdir"):
                if not any(key.endswith(wanted) for key in keys):
                    sys.exit(f"after regsvr32 {options} there is no {wanted} among the {hive}'s classes")
            # This Wine looks for classes in the machine's registry alone.
            if hive == "machine" and script(copy, creates) != 0:
                sys.exit("the registered classes cannot be created by name")
            register(copy, folder, "/u")
            left = registry(copy)
            if left != before:
                changed = sorted(key for key in before.keys() | left.keys() if before.get(key) != left.get(key))
                sys.exit("unregistering left behind:\n" + "\n".join(map(str, changed)))
        return 0
    finally:
        copy.stop()
        shutil.rmtree(copy.prefix, ignore_errors=True)


def script(wine, file, *arguments, quiet=False):
    # A script file is opened without sharing: each run has its own copy.
    with tempfile.TemporaryDirectory(dir=wine.temporary) as folder:
        copy = shutil.copy(file, folder)
        ended = wine.run("cscript", "//nologo", windows_path(copy), *arguments,
                         WINEDEBUG="-all,fixme+wscript,fixme+vbscript,fixme+jscript")
    if not quiet:
        sys.stdout.write(ended.stdout.decode("cp437").replace("\r", ""))
    if ended.returncode == PASSED:
        return 0
    if quiet:
        return 1
    sys.stdout.write(ended.stderr.decode(errors="replace"))
    print(f"{file} ended with {ended.returncode}, not with {PASSED}: it failed")
    return 1


def picture(wine, *command):
    """The program's PNG must be whole: every chunk with its checksum, every line of the picture there."""
    with tempfile.TemporaryDirectory(dir=wine.temporary) as folder:
        file = pathlib.Path(folder) / "screen.png"
        ended = wine.run(*command, windows_path(file))
        sys.stdout.write((ended.stdout + ended.stderr).decode(errors="replace"))
        data = file.read_bytes() if file.exists() else b""
    if not data.startswith(b"\x89PNG\r\n\x1a\n"):
        sys.exit(f"{command[0]} ended with {ended.returncode} and wrote no PNG")
    chunks, at = {}, 8
    while at < len(data):
        (size,) = struct.unpack_from(">I", data, at)
        name, body = data[at + 4 : at + 8], data[at + 8 : at + 8 + size]
        if struct.unpack_from(">I", data, at + 8 + size)[0] != zlib.crc32(name + body):
            sys.exit(f"the chunk {name!r} of the PNG has another checksum")
        chunks[name] = body
        at += 12 + size
    width, height, bits, colour = struct.unpack_from(">IIBB", chunks[b"IHDR"])
    lines = zlib.decompress(chunks[b"IDAT"])
    if (bits, colour) != (8, 2) or len(lines) != height * (1 + 3 * width) or b"IEND" not in chunks:
        sys.exit(f"the PNG of {width} x {height} is not whole")
    if len(set(lines)) < 3:
        sys.exit("the picture is empty")
    print(f"a picture of {width} x {height}")
    return 0


def trace(wine, *command):
    """One file for the process, with every transfer in it up to the end of the process."""
    with tempfile.TemporaryDirectory(dir=wine.temporary) as folder:
        ended = wine.run(*command, QKEL4X_TRACE_FILE=windows_path(folder) + "\\%p.ndjson")
        files = list(pathlib.Path(folder).iterdir())
        texts = [file.read_text(encoding="utf-8") for file in files]
    if ended.returncode != 0 or len(files) != 1 or "%p" in files[0].name:
        sys.exit(f"{command[0]} ended with {ended.returncode} and recorded into {files}")
    header, *events = [json.loads(line) for line in texts[0].splitlines()]
    if (header["trace"], header["format"], header["program"]) != ("kel4x", 1, "QHost.dll"):
        sys.exit(f"the recording begins with {header}")
    sent = [event["text"] for event in events if event["direction"] == "sent"]
    if "READ:RF:LEVEL?" not in sent or not any("TCP/IP.Port" in event.get("settings", {}) for event in events):
        sys.exit(f"the recording is not whole:\n{texts[0]}")
    print(f"{len(events)} events")
    return 0


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
        rest = [argument.replace("PORT", port) for argument in rest] if port else rest
        if action == "script":
            return script(wine, *rest)
        if action == "trace":
            return trace(wine, *rest)
        if action == "picture":
            return picture(wine, *rest)
        ended = wine.run(*rest)
        sys.stdout.write((ended.stdout + ended.stderr).decode(errors="replace").replace("\r", ""))
        if ended.returncode != 0:
            print(f"{rest[0]} ended with {ended.returncode}")
        return 0 if ended.returncode == 0 else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
