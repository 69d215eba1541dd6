#!/usr/bin/env python3
"""Runs kel4x as a person does: against kel4x simulate in another process, over TCP and a pseudo-terminal.

    end_to_end.py PATH-OF-KEL4X [NAME...]

Every wait is bounded. NAME runs only the tests whose names contain it.
"""

import csv
import json
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest
import xml.etree.ElementTree

KEL4X = os.path.abspath(sys.argv[1])
BOUND = 30  # seconds that any one command may take


def environment(folder, **more):
    """An environment in which no setting of this machine counts."""
    clean = {name: value for name, value in os.environ.items() if name not in ("KEL4X_RESOURCE", "NO_COLOR")}
    return {**clean, "XDG_CONFIG_HOME": folder, "HOME": folder, **more}


class Simulator:
    """kel4x simulate, until the end of the with block."""

    def __init__(self, *flags):
        self.process = subprocess.Popen(
            [KEL4X, "simulate", "--port", "0", "--settle", "0", *flags], stdout=subprocess.PIPE, text=True
        )
        self.resource = self.line()

    def line(self):
        timer = threading.Timer(BOUND, self.process.kill)
        timer.start()
        line = self.process.stdout.readline().strip()
        timer.cancel()
        return line

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait(BOUND)
        self.process.stdout.close()

    def port(self):
        return int(self.resource.split("::")[2])


class Scripted:
    """A server that answers each line with what `answer` makes of it, and remembers the lines."""

    def __init__(self, answer, terminator=b"\n"):
        self.answer = answer
        self.terminator = terminator
        self.lines = []
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.listener.settimeout(BOUND)
        self.resource = f"TCPIP::127.0.0.1::{self.listener.getsockname()[1]}::SOCKET"
        self.thread = threading.Thread(target=self.serve, daemon=True)
        self.thread.start()

    def serve(self):
        try:
            connection, _ = self.listener.accept()
        except OSError:
            return
        with connection, connection.makefile("rb") as lines:
            connection.settimeout(BOUND)
            for line in lines:
                text = line.decode("latin-1").strip()
                self.lines.append(text)
                reply = self.answer(text)
                if reply is None:
                    continue
                if reply is False:
                    return
                connection.sendall(reply.encode() + self.terminator)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.listener.close()
        self.thread.join(BOUND)


class Kel4xTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)

    def run_tool(self, *arguments, code=0, stdin=None, **variables):
        done = subprocess.run(
            [KEL4X, *arguments],
            capture_output=True,
            text=True,
            timeout=BOUND,
            input=stdin,
            env=environment(self.folder, **variables),
            check=False,
        )
        self.assertEqual(done.returncode, code, f"{arguments}\n{done.stdout}\n{done.stderr}")
        return done

    def path(self, name):
        return os.path.join(self.folder, name)

    # Reading and writing

    def test_get_shows_exactly_the_drain_the_gate_and_the_query(self):
        with Simulator() as simulator:
            done = self.run_tool(
                "--resource", simulator.resource, "--virtual-time", "get", "MeasureVsbMerRmsDb", "--trace"
            )
        lines = done.stderr.splitlines()
        begin = lines.index("-- get MeasureVsbMerRmsDb")
        end = lines.index("-- going off line")
        sent = [line[2:] for line in lines[begin:end] if line.startswith("> ")]
        self.assertEqual(sent, ["SYST:ERR?", "SENS:ATSC:MEAS?", "SYST:ERR?", "READ:ATSC:MER:RMS?"])
        received = [line[2:].rsplit(" (", 1)[0] for line in lines[begin:end] if line.startswith("< ")]
        self.assertEqual(received[:3], ['0,"No error"', "NORM", '0,"No error"'])
        on_line = [line[2:] for line in lines[:begin] if line.startswith("> ")]
        self.assertEqual(on_line, ["SYST:ERR?", "*CLS;*SRE 0;*ESE 0", "SYST:ERR?", "SYST:REM"])
        self.assertEqual([line for line in lines[end:] if line.startswith("> ")], ["> SYST:ERR?", "> SYST:LOC"])
        number, unit = done.stdout.split()
        self.assertEqual(unit, "dB")
        self.assertTrue(20 < float(number) < 45, number)

    def test_a_reading_with_a_status_word_never_looks_like_a_plain_number(self):
        replies = {"SYST:ERR?": '0,"No error"', "SENS:ATSC:MEAS?": "NORM", "READ:RF:LEVEL?": '"OVER"',
                   "READ:ATSC:FREQ:OFFSET?": "---", "*IDN?": "A,B,C,5.10", "READ:ATSC:BER:BRS?": "<1E-7"}
        for name, text in (("MeasureRfLevel", "OVER"), ("MeasurePilotFreqOffset", "---"),
                           ("MeasureBerBeforeRS", "<1e-07")):
            with Scripted(replies.get) as server:
                done = self.run_tool("--resource", server.resource, "--virtual-time", "get", name)
                self.assertEqual(done.stdout.strip().split()[0], text)
            with Scripted(replies.get) as server:
                done = self.run_tool("--resource", server.resource, "--virtual-time", "get", name, "--json")
                self.assertIn("status", json.loads(done.stdout))

    def test_set_takes_an_enumeration_by_name_and_by_number(self):
        with Simulator() as simulator:
            tool = ("--resource", simulator.resource, "--virtual-time")
            self.run_tool(*tool, "set", "MeasureMode", "kelPAR")
            self.assertEqual(self.run_tool(*tool, "get", "MeasureMode").stdout, "kelPAR\n")
            self.run_tool(*tool, "set", "measuremode", "2")
            answer = json.loads(self.run_tool(*tool, "get", "MeasureMode", "--json").stdout)
            self.assertEqual((answer["value"], answer["text"]), (2, "kelCCDF"))
            self.run_tool(*tool, "set", "RfCenterFrequency", "575e6")
            self.assertEqual(self.run_tool(*tool, "get", "RfCenterFrequency").stdout, "575000000 Hz\n")
            self.run_tool(*tool, "call", "MeasureResetBer")

    def test_shell_keeps_the_instrument_on_line_between_commands(self):
        with Simulator() as simulator:
            done = self.run_tool("--resource", simulator.resource, "--virtual-time", "shell",
                                 stdin="set MeasureMode kelPAR\nget MeasureMode # remark\n\nexit\n")
            self.assertEqual(done.stdout, "kelPAR\n")
            self.run_tool("--resource", simulator.resource, "--virtual-time", "shell", stdin="get Nothing\n", code=2)

    def test_a_serial_device_works_as_tcp_does(self):
        link = self.path("kel40")
        with Simulator("--pty", link) as simulator:
            resource = simulator.line()
            self.assertEqual(resource, f"ASRL::{link}::INSTR")
            done = self.run_tool("--resource", resource, "--virtual-time", "get", "ModelNumber", "MeasureRfLevel")
            self.assertIn("ModelNumber: KEL 40", done.stdout)

    # Exit codes and messages

    def test_exit_codes(self):
        with Simulator() as simulator:
            tool = ("--resource", simulator.resource, "--virtual-time")
            refused = self.run_tool(*tool, "set", "Mode", "kelNTSC", code=1)
            self.assertIn("Invalid property value (Mode = NTSC)", refused.stderr)
            self.assertEqual(refused.stdout, "")
            refused = self.run_tool(*tool, "get", "MeasureVsbEvmPeak", "--json", code=1)
            self.assertEqual(json.loads(refused.stdout)["error"]["code"], 2016)
        self.assertIn("nearest is MeasureRfLevel", self.run_tool("get", "MeasureRfLevl", code=2).stderr)
        self.run_tool("nonsense", code=2)
        self.run_tool("get", code=2)
        self.run_tool("--resource", "TCPIP::h::INSTR", "get", "Mode", code=2)
        self.run_tool("--resource", "SIM", "set", "Mode", "kelNothing", code=2)
        self.run_tool("replay", self.path("none"), code=2)
        self.run_tool("--config", self.path("none"), "list", code=2)
        with socket.create_server(("127.0.0.1", 0)) as closed:
            port = closed.getsockname()[1]
        lost = self.run_tool("--resource", f"TCPIP::127.0.0.1::{port}::SOCKET", "get", "Mode", "--virtual-time", code=3)
        self.assertIn(f"127.0.0.1:{port}", lost.stderr)
        self.run_tool("--resource", f"ASRL::{self.path('none')}::INSTR", "get", "Mode", code=3)

    def test_help_names_every_verb_and_has_examples(self):
        text = self.run_tool("--help").stdout
        for verb in ("get", "set", "call", "members", "settings", "survey", "simulate", "shell", "screenshot",
                     "statistics", "watch", "doctor", "list", "replay", "completion"):
            self.assertIn(f"  {verb} ", text)
            self.assertIn("Example", self.run_tool(verb, "--help").stdout)
        self.assertRegex(self.run_tool("--version").stdout, r"^kel4x \d+\.\d+\.\d+\n$")

    def test_flag_counts_before_environment_before_file(self):
        folder = pathlib.Path(self.folder, "kel4x")
        folder.mkdir()
        (folder / "kel4x.toml").write_text('resource = "GPIB0::31::INSTR"\n')
        self.assertIn("kel4x.toml: resource \"GPIB0::31::INSTR\"", self.run_tool("get", "Mode", code=2).stderr)
        self.assertIn("KEL4X_RESOURCE: resource \"ASRL99::INSTR\"",
                      self.run_tool("get", "Mode", code=2, KEL4X_RESOURCE="ASRL99::INSTR").stderr)
        self.run_tool("--resource", "SIM", "get", "Mode", KEL4X_RESOURCE="ASRL99::INSTR")

    def test_settings_are_stored_and_used(self):
        self.run_tool("settings", "RS232.Baud Rate=9600")
        self.assertEqual(self.run_tool("settings", "RS232.Baud Rate", "--setting", "RS232.Parity=EVEN").stdout, "9600\n")
        self.assertIn("1200", self.run_tool("settings", "RS232.Baud Rate=50", code=2).stderr)
        for line in self.run_tool("settings", "--json").stdout.splitlines():
            self.assertEqual(set(json.loads(line)), {"name", "value", "choices"})

    def test_members_and_completion(self):
        names = self.run_tool("members", "--names").stdout.split()
        self.assertIn("MeasureRfLevel", names)
        self.assertNotIn("MeasureNoiseGenerator", names)
        for line in self.run_tool("members", "--json").stdout.splitlines():
            json.loads(line)
        self.assertIn("kelPAR", self.run_tool("members", "MeasureMode", "--names").stdout.split())
        if shutil.which("bash"):
            script = self.run_tool("completion", "bash").stdout
            ask = script + "\nCOMP_WORDS=(kel4x get MeasureRf); COMP_CWORD=2; _kel4x; echo ${COMPREPLY[@]}\n"
            done = subprocess.run(["bash", "-c", ask], capture_output=True, text=True, timeout=BOUND, check=True,
                                  env=environment(self.folder, PATH=os.path.dirname(KEL4X) + ":" + os.environ["PATH"]))
            self.assertEqual(done.stdout, "MeasureRfLevel\n")
        for shell in ("zsh", "fish"):
            self.assertIn("kel4x", self.run_tool("completion", shell).stdout)

    # The survey

    def test_survey_reads_everything_over_tcp(self):
        report, table = self.path("report.html"), self.path("survey.csv")
        with Simulator() as simulator:
            done = self.run_tool("--resource", simulator.resource, "--virtual-time", "survey", "--json",
                                 "--report", report, "--csv", table)
            tool = ("--resource", simulator.resource, "--virtual-time")
            self.assertEqual(self.run_tool(*tool, "get", "MeasureMode").stdout, "kelNORM\n")
        rows = [json.loads(line) for line in done.stdout.splitlines()]
        by_name = {(row["name"], row.get("index")): row for row in rows}
        self.assertEqual(len(by_name), len(rows))
        names = set(self.run_tool("members", "--names").stdout.split())
        readable = {name for name in names
                    if json.loads(self.run_tool("members", name, "--json").stdout)["access"].startswith("read")}
        self.assertEqual({name for name, _ in by_name}, readable - {"ResponseString", "Prefix", "Postfix"})
        refused = {row["name"]: row["error"]["code"] for row in rows if "error" in row}
        self.assertEqual(refused, {"InputAttenuation_Demod": 2018, "InputAttenuationValue_Demod": 2018})
        self.assertEqual(by_name["MeasureVsbMerRmsDb", None]["unit"], "dB")
        self.assertEqual(by_name["GhostPatternDelay", 1]["unit"], "us")
        self.assertEqual(by_name["PhaseJitterValue", 7]["mode"], "kelPJIT")
        # MER and EVM belong together, and so do the error counts of a good signal.
        self.assertGreater(by_name["MeasureVsbMerRmsDb", None]["value"], 25)
        self.assertLess(by_name["MeasureVsbEvmRms", None]["value"], 5)
        self.assertEqual(by_name["MeasureSegErrPerSec", None]["value"], 0)

        with open(table, encoding="utf-8", newline="") as file:
            lines = list(csv.DictReader(file))
        self.assertEqual(len(lines), len(rows))
        page = pathlib.Path(report).read_text(encoding="utf-8")
        self.assertEqual(page.count("<svg"), 3)
        for svg in page.split("<svg")[1:]:
            xml.etree.ElementTree.fromstring("<svg" + svg.split("</svg>")[0] + "</svg>")
        self.assertIn("data:image/png;base64,", page)
        self.assertNotIn("src=\"http", page)
        self.assertNotIn("@import", page)
        self.assertIn("READ:ATSC:MER:RMS?", page)
        self.assertIn("Delay / µs", page)

    def test_survey_of_the_embedded_instrument(self):
        done = self.run_tool("--resource", "SIM", "survey", "--csv", "-")
        rows = {row["name"]: row for row in csv.DictReader(done.stdout.splitlines())}
        self.assertEqual(rows["ScreenShot"]["error"], "2024")
        self.assertEqual(rows["MeasureSegErrPerSec"]["value"], "0")

    def start_survey(self, simulator, *more):
        """A survey whose waits are real, so that there is time to disturb it."""
        return subprocess.Popen(
            [KEL4X, "--resource", simulator.resource, "survey", "--json", "--trace", *more],
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, env=environment(self.folder))

    def wait_for(self, process, text):
        timer = threading.Timer(BOUND, process.kill)
        timer.start()
        seen = ""
        for line in process.stderr:
            seen += line
            if text in line:
                break
        timer.cancel()
        self.assertIn(text, seen)

    def test_killing_the_simulator_ends_a_survey_with_rows_that_explain_it(self):
        with Simulator() as simulator:
            survey = self.start_survey(simulator)
            self.wait_for(survey, "-- survey: Mode = kelATSC")
            self.wait_for(survey, "> SYST:MODE ATSC")
            simulator.process.kill()
            begin = time.monotonic()
            out, err = survey.communicate(timeout=BOUND)
        self.assertEqual(survey.returncode, 3, err)
        self.assertLess(time.monotonic() - begin, 20)
        rows = [json.loads(line) for line in out.splitlines()]
        self.assertGreater(len(rows), 100)
        for row in rows:
            self.assertIn("the link was lost at", row["error"]["description"])
        self.assertIn("the link was lost at", err)

    def test_a_link_that_breaks_between_readings_keeps_what_was_read(self):
        def answer(line):
            replies = {"SYST:ERR?": '0,"No error"', "SENS:ATSC:MEAS?": "NORM", "*IDN?": "A,B,C,5.10",
                       "READ:INFO:DATA?": "0", "SYSTEM:SERVICE:GET:BOARD:INFO?": "0x83 6.0"}
            if line in replies:
                return replies[line]
            return False if "?" in line else None
        with Scripted(answer) as server:
            done = self.run_tool("--resource", server.resource, "--virtual-time", "survey", "--json",
                                 "--report", self.path("r.html"), code=3)
        rows = {row["name"]: row for row in map(json.loads, done.stdout.splitlines())}
        self.assertEqual(rows["SerialNumber"]["value"], "C")
        self.assertIn("not read: the link was lost at AlarmStatistics", rows["MeasureRfLevel"]["error"]["description"])
        self.assertIn("Incomplete", pathlib.Path(self.path("r.html")).read_text(encoding="utf-8"))

    def test_ctrl_c_leaves_the_instrument_local(self):
        with Simulator() as simulator:
            survey = self.start_survey(simulator)
            self.wait_for(survey, "> SYST:MODE ATSC")
            survey.send_signal(signal.SIGINT)
            out, err = survey.communicate(timeout=BOUND)
        self.assertEqual(survey.returncode, 130, err)
        sent = [line for line in err.splitlines() if line.startswith("> ")]
        self.assertEqual(sent[-1], "> SYST:LOC")
        self.assertIn("not read: interrupted", out)

    # The other verbs

    def test_screenshot_writes_png_and_pcx(self):
        with Simulator() as simulator:
            tool = ("--resource", simulator.resource, "--virtual-time", "screenshot")
            self.run_tool(*tool, self.path("s.png"))
            self.run_tool(*tool, self.path("s.pcx"))
            self.run_tool(*tool, self.path("s.gif"), code=2)
        self.assertEqual(pathlib.Path(self.path("s.png")).read_bytes()[:8], b"\x89PNG\r\n\x1a\n")
        self.assertEqual(pathlib.Path(self.path("s.pcx")).read_bytes()[0], 10)

    def test_statistics_and_watch_and_list(self):
        with Simulator() as simulator:
            tool = ("--resource", simulator.resource, "--virtual-time")
            self.assertIn("MonitoringTime", self.run_tool(*tool, "statistics").stdout)
            statistics = json.loads(self.run_tool(*tool, "statistics", "--json").stdout)
            self.assertIn("MonitoringTimeSeconds", statistics["value"])
            lines = self.run_tool(*tool, "watch", "MeasureRfLevel", "StateSignal", "--count", "3").stdout.splitlines()
            self.assertEqual([json.loads(line)["name"] for line in lines], ["MeasureRfLevel", "StateSignal"] * 3)
            lines = self.run_tool(*tool, "watch", "MeasureRfLevel", "--count", "2", "--csv").stdout.splitlines()
            self.assertEqual(len(list(csv.DictReader(lines))), 2)
        for line in self.run_tool("list", "--json").stdout.splitlines():
            json.loads(line)

    def test_doctor_names_the_layer_that_fails(self):
        with Simulator() as simulator:
            done = self.run_tool("--resource", simulator.resource, "--virtual-time", "doctor", "--json")
        layers = [json.loads(line) for line in done.stdout.splitlines()]
        self.assertEqual({layer["result"] for layer in layers}, {"good"})
        self.assertEqual([layer["layer"] for layer in layers],
                         ["resource", "driver", "name", "reachability", "port", "terminator", "identity", "error queue",
                          "mode", "reading"])
        done = self.run_tool("--resource", simulator.resource, "doctor", "--json", code=3)
        last = json.loads(done.stdout.splitlines()[-1])
        self.assertEqual((last["layer"], last["result"]), ("port", "bad"))
        self.assertIn("nothing takes connections", last["advice"])
        self.assertEqual(self.first_bad("TCPIP::no-such-host.invalid::5025::SOCKET"), "name")
        self.assertEqual(self.first_bad("ASRL::/dev/no-such-device::INSTR"), "name")
        with Scripted(lambda text: "0,\"No error\"", terminator=b"\r") as server:
            self.assertEqual(self.first_bad(server.resource), "terminator")
        with Scripted(lambda text: "ready" if text.endswith("?") else None) as server:
            self.assertEqual(self.first_bad(server.resource), "error queue")

    def first_bad(self, resource, *flags):
        done = self.run_tool("--resource", resource, "doctor", "--json", *flags, code=3)
        return [json.loads(line)["layer"] for line in done.stdout.splitlines() if '"bad"' in line][0]

    def test_a_recording_replays_and_a_changed_one_is_found_out(self):
        trace = self.path("t.ndjson")
        with Simulator() as simulator:
            self.run_tool("--resource", simulator.resource, "--virtual-time", "survey", "--trace-file", trace)
        lines = pathlib.Path(trace).read_text(encoding="utf-8").splitlines()
        header = json.loads(lines[0])
        self.assertEqual((header["trace"], header["command"][0]), ("kel4x", "--resource"))
        self.assertIn("none", header["secrets"])
        for line in lines[1:]:
            event = json.loads(line)
            self.assertTrue({"time", "direction", "port"} <= set(event))
        self.assertIn("no difference", self.run_tool("replay", trace).stderr)
        at = next(i for i, line in enumerate(lines) if "READ:RF:LEVEL?" in line)
        lines[at] = lines[at].replace("READ:RF:LEVEL?", "READ:RF:LEVL?")
        pathlib.Path(trace).write_text("\n".join(lines) + "\n", encoding="utf-8")
        self.assertIn(f"t.ndjson:{at + 1}: the recording has \"READ:RF:LEVL?\" sent, but now "
                      "\"READ:RF:LEVEL?\" is sent", self.run_tool("replay", trace, code=1).stderr)

    def test_the_environment_names_a_file_for_each_process(self):
        for _ in range(2):
            self.run_tool("--resource", "SIM", "get", "ModelNumber", QKEL4X_TRACE_FILE=self.path("%p.ndjson"))
        traces = list(pathlib.Path(self.folder).glob("*.ndjson"))
        self.assertEqual(len(traces), 2)
        for trace in traces:
            self.assertIn("no difference", self.run_tool("replay", trace, QKEL4X_TRACE_FILE=trace).stderr)
        other = self.run_tool("replay", traces[0], "--", "get", "SerialNumber", "--json")
        self.assertEqual(json.loads(other.stdout)["name"], "SerialNumber")
        self.run_tool("replay", traces[0], "--", "get", "Mode", code=1)
        self.assertIn("/none/t.ndjson", self.run_tool("--resource", "SIM", "get", "Mode", "--trace-file", "/none/t.ndjson",
                                                      code=2).stderr)

    @unittest.skipUnless(os.path.exists("/dev/full"), "this system has no device that is always full")
    def test_a_full_disk_fails_no_measurement(self):
        done = self.run_tool("--resource", "SIM", "get", "ModelNumber", "--trace-file", "/dev/full")
        self.assertEqual(done.stdout, "KEL 40\n")
        self.assertIn("the trace file is not complete", done.stderr)

    def test_the_simulation_flag_of_the_host_decodes_nothing(self):
        with Simulator() as simulator:
            done = self.run_tool("--resource", simulator.resource, "--virtual-time", "--simulate-host", "get",
                                 "MeasureRfLevel", "--json")
        self.assertEqual(json.loads(done.stdout)["value"], 0.0)

    def test_simulate_stops_cleanly(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            with Simulator() as simulator:
                simulator.process.send_signal(number)
                self.assertEqual(simulator.process.wait(BOUND), 0)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + [f"-k{name}" for name in sys.argv[2:]], verbosity=1)
