#!/usr/bin/python3
"""A whole session with the instrument through PyVISA, as any other VISA client would have it.

usage: pyvisa_session.py RESOURCE SCPI_DOCUMENT

Ends with 0 and "all is well" if every answer was the one written out here; otherwise it tells the
first that was not. Every command that the document says can be set and read back must be in the
table below.
"""

import re
import sys
import time

import pyvisa

MODULES = {1: "SCN,SCN4001A,0,01.02", 2: "SCN,SCN4014A,0,01.02"}
EMPTY_SLOT = "SCN,0,0,0"
IDENTITY = "SCN,SCN4070A,MY00000042,01.02-sim"
NO_ERROR = '+0,"No error"'

# Header, value to set, answer of the query. With a channel list behind both.
CHANNEL_SETTINGS = [
    ("FUNC", '"TEMP:FRTD"', '"TEMP:FRTD"'),
    ("ROUT:CHAN:LAB", '"oven 2"', '"oven 2"'),
    ("ROUT:CHAN:DEL", "1.5", "+1.500000E+00"),
    ("ROUT:CHAN:DEL:AUTO", "ON", "1"),
    ("INP:IMP:AUTO", "ON", "1"),
    ("UNIT:TEMP", "K", "K"),
    ("VOLT:DC:RANG", "300", "+3.000000E+02"),
    ("VOLT:DC:RANG:AUTO", "ON", "1"),
    ("VOLT:AC:RANG", "0.1", "+1.000000E-01"),
    ("VOLT:AC:RANG:AUTO", "ON", "1"),
    ("PER:VOLT:RANG", "1", "+1.000000E+00"),
    ("PER:VOLT:RANG:AUTO", "ON", "1"),
    ("FREQ:VOLT:RANG", "100", "+1.000000E+02"),
    ("FREQ:VOLT:RANG:AUTO", "ON", "1"),
    ("STR:VOLT:RANG", "10", "+1.000000E+01"),
    ("STR:VOLT:RANG:AUTO", "ON", "1"),
    ("RES:RANG", "1e+09", "+1.000000E+09"),
    ("RES:RANG:AUTO", "ON", "1"),
    ("FRES:RANG", "100", "+1.000000E+02"),
    ("FRES:RANG:AUTO", "ON", "1"),
    ("CAP:RANG", "1e-09", "+1.000000E-09"),
    ("CAP:RANG:AUTO", "ON", "1"),
    ("CURR:DC:RANG", "1e-06", "+1.000000E-06"),
    ("CURR:DC:RANG:AUTO", "ON", "1"),
    ("CURR:AC:RANG", "1", "+1.000000E+00"),
    ("CURR:AC:RANG:AUTO", "ON", "1"),
    ("VOLT:NPLC", "0.02", "+2.000000E-02"),
    ("RES:NPLC", "0.2", "+2.000000E-01"),
    ("FRES:NPLC", "10", "+1.000000E+01"),
    ("TEMP:NPLC", "100", "+1.000000E+02"),
    ("STR:NPLC", "10", "+1.000000E+01"),
    ("CURR:NPLC", "0.2", "+2.000000E-01"),
    ("DIOD:NPLC", "10", "+1.000000E+01"),
    ("DIDD:NPLC", "100", "+1.000000E+02"),
    ("VOLT:AC:BAND", "3", "+3.000000E+00"),
    ("CURR:AC:BAND", "200", "+2.000000E+02"),
    ("PER:RANG:LOW", "200", "+2.000000E+02"),
    ("PER:VOLT:BAND", "3", "+3.000000E+00"),
    ("FREQ:RANG:LOW", "3", "+3.000000E+00"),
    ("FREQ:VOLT:BAND", "200", "+2.000000E+02"),
    ("RES:OCOM", "ON", "1"),
    ("FRES:OCOM", "ON", "1"),
    ("VOLT:REF", "-2.5", "-2.500000E+00"),
    ("TEMP:TRAN:TC:TYPE", "T", "T"),
    ("TEMP:TRAN:TC:RJUN:TYPE", "FIX", "FIX"),
    ("TEMP:TRAN:TC:RJUN", "-20", "-2.000000E+01"),
    ("TEMP:TRAN:TC:CHEC", "ON", "1"),
    ("TEMP:TRAN:TC:REF", "ON", "1"),
    ("TEMP:TRAN:RTD:REF", "ON", "1"),
    ("TEMP:TRAN:FRTD:REF", "ON", "1"),
    ("TEMP:TRAN:THER:REF", "ON", "1"),
    ("TEMP:TRAN:FTH:REF", "ON", "1"),
    ("TEMP:TRAN:RTD:RES", "100.5", "+1.005000E+02"),
    ("TEMP:TRAN:FRTD:RES", "1000", "+1.000000E+03"),
    ("TEMP:TRAN:RTD:TYPE", "91", "+91"),
    ("TEMP:TRAN:FRTD:TYPE", "91", "+91"),
    ("TEMP:TRAN:THER:TYPE", "+2252", "+2252"),
    ("TEMP:TRAN:FTH:TYPE", "+10000", "+10000"),
    ("STR:GFAC", "2.1", "+2.100000E+00"),
    ("STR:RES", "350", "+3.500000E+02"),
    ("STR:EXC", "12", "+1.200000E+01"),
    ("STR:POIS", "-0.999", "-9.990000E-01"),
    ("CALC:SCAL:STAT", "ON", "1"),
    ("CALC:SCAL:FUNC", "PCT", "PCT"),
    ("CALC:SCAL:GAIN", "-1.5e3", "-1.500000E+03"),
    ("CALC:SCAL:OFFS", "0.25", "+2.500000E-01"),
    ("CALC:SCAL:UNIT", '"bar"', '"bar"'),
    ("CALC:SCAL:REF", "1e+15", "+1.000000E+15"),
    ("CALC:SCAL:REF:AUTO", "ON", "1"),
    ("CALC:SCAL:DBM:REF", "8000", "+8000"),
    ("CALC:SCAL:DB:REF", "-200", "-2.000000E+02"),
]

# The same for the instrument as a whole. A name and a number where the query takes one.
INSTRUMENT_SETTINGS = [
    ("*ESE", "36", "+36"),
    ("*SRE", "32", "+32"),
    ("SYST:DATE", "2026,01,12", "2026,01,12"),
    ("MMEM:LOG:ENAB", "ON", "1"),
    ("MMEM:FORM:READ:RLIM", "OFF", "0"),
    ("MMEM:FORM:READ:RLIM:COUN", "100000", "+1.00000000E+05"),
    ("ROUT:MON:STAT", "ON", "1"),
    ("ROUT:SCAN", "(@101:103,105)", "#218(@101,102,103,105)"),
    ("TRIG:SOUR", "ALAR3", "ALAR3"),
    ("TRIG:COUN", "7", "+7.00000000E+00"),
    ("TRIG:TIM", "2.5", "+2.50000000E+00"),
    ("FORM:READ:UNIT", "ON", "1"),
    ("FORM:READ:TIME", "ON", "1"),
    ("FORM:READ:TIME:TYPE", "ABS", "ABS"),
    ("FORM:READ:CHAN", "ON", "1"),
    ("FORM:READ:ALAR", "ON", "1"),
]

# What is checked by steps of its own.
CHECKED_APART = ["SYST:TIME", "MEM:STAT:NAME"]


class Mismatch(Exception):
    pass


def expect(what, got, wanted):
    if got != wanted:
        raise Mismatch(f"{what}: {got!r} instead of {wanted!r}")


def spelling_pattern(spelling):
    """The regular expression of a header as the document spells it."""
    pattern = ""
    for bracket, body in re.findall(r"(\[)?([^\[\]]+)\]?", spelling):
        words = re.sub(
            r"([A-Z*0-9]+)([a-z]*)",
            lambda m: re.escape(m.group(1)) + (f"({m.group(2).upper()})?" if m.group(2) else ""),
            body,
        )
        pattern += f"({words})?" if bracket else words
    return re.compile(f"^{pattern}$")


def settable_headers(document):
    """The headers of the document's tables that have a command and a query."""
    headers = []
    channel_section = False
    for line in open(document, encoding="utf-8"):
        if line.startswith("## "):
            channel_section = line.strip() in ("## Channel", "## Scaling")
        cell = line.split("|")[1] if line.startswith("| `") else ""
        if cell == "":
            continue
        query_only = re.match(r" `[^`]+` `\?`", cell)
        has_query = channel_section or "`?`" in cell
        if has_query and not query_only:
            headers += re.findall(r"`([*\[A-Z][^`]*)`", cell)
    return headers


def check_coverage(document):
    ours = [row[0] for row in CHANNEL_SETTINGS + INSTRUMENT_SETTINGS] + CHECKED_APART
    headers = settable_headers(document)
    if len(headers) < 80:
        raise Mismatch(f"only {len(headers)} settings found in {document}")
    for header in headers:
        pattern = spelling_pattern(header)
        if not any(pattern.match(name) for name in ours):
            raise Mismatch(f"{header} is set nowhere")


def check_identity(instrument):
    instrument.write("*CLS")
    expect("*IDN?", instrument.query("*IDN?"), IDENTITY)
    for slot in range(1, 16):
        query = f"SYST:CTYP? {slot}"
        expect(query, instrument.query(query), MODULES.get(slot, EMPTY_SLOT))


def check_settings(instrument):
    instrument.write("*RST")
    for header, value, answer in CHANNEL_SETTINGS:
        instrument.write(f"{header} {value},(@101)")
        expect(header, instrument.query(f"{header}? (@101)"), answer)
    for header, value, answer in INSTRUMENT_SETTINGS:
        instrument.write(f"{header} {value}")
        expect(header, instrument.query(f"{header}?"), answer)
    instrument.write('MEM:STAT:NAME 3,"before lunch"')
    expect("MEM:STAT:NAME? 3", instrument.query("MEM:STAT:NAME? 3"), '"before lunch"')
    instrument.write("SYST:TIME 07,30,00.125")
    expect("SYST:TIME?", instrument.query("SYST:TIME?")[:6], "07,30,")
    expect("errors behind the settings", instrument.query("SYST:ERR?"), NO_ERROR)
    instrument.write("VOLT:NPLC 1000,(@101)")
    expect("refused setting", instrument.query("SYST:ERR?"), '-222,"Data out of range"')
    expect("what it left", instrument.query("VOLT:NPLC? (@101)"), "+2.000000E-02")


def block_content(reply):
    """What a definite-length block holds."""
    digits = int(reply[1])
    length = int(reply[2 : 2 + digits])
    content = reply[2 + digits :]
    expect("length of the block", len(content), length)
    return content


def check_scan(instrument):
    instrument.write("*RST;*CLS")
    instrument.write('FUNC "TEMP:TC",(@102)')
    instrument.write("ROUT:SCAN (@101:103,201)")
    instrument.write("TRIG:SOUR IMM;COUN 5")
    instrument.write("FORM:READ:ALAR ON;CHAN ON;TIME ON;UNIT ON;TIME:TYPE ABS")
    instrument.write("INIT")
    deadline = time.monotonic() + 20
    while instrument.query("STAT:OPER:COND?") != "+256" and time.monotonic() < deadline:
        time.sleep(0.05)
    expect("DATA:POIN?", instrument.query("DATA:POIN?"), "+20")
    fields = block_content(instrument.query("R? 20")).split(",")
    expect("number of fields", len(fields), 180)
    expect("channels", fields[7::9], ["101", "102", "103", "201"] * 5)
    expect("alarms", fields[8::9], ["0"] * 20)
    values = [field.split(" ") for field in fields[0::9]]
    expect("units", [unit for _, unit in values], ["Vdc", "C", "Vdc", "Adc"] * 5)
    for index, (low, high) in enumerate([(0.9, 1.1), (15, 40), (1.4, 1.6), (0.009, 0.011)]):
        for value, _ in values[index::4]:
            if not low < float(value) < high:
                raise Mismatch(f"value {value} outside {low} to {high}")
    stamps = [tuple(float(part) for part in fields[i + 1 : i + 7]) for i in range(0, 180, 9)]
    if stamps != sorted(stamps) or len(set(stamps)) != 20:
        raise Mismatch(f"time stamps {stamps}")
    expect("readings left", instrument.query("DATA:POIN?;:R?"), "+0;#10")
    expect("errors behind the scan", instrument.query("SYST:ERR?"), NO_ERROR)


def main():
    resource, document = sys.argv[1:]
    check_coverage(document)
    instrument = pyvisa.ResourceManager("@py").open_resource(
        resource, read_termination="\n", write_termination="\n", timeout=5000
    )
    try:
        check_identity(instrument)
        check_settings(instrument)
        check_scan(instrument)
    finally:
        instrument.close()
    print("all is well")


if __name__ == "__main__":
    try:
        main()
    except Mismatch as mismatch:
        sys.exit(str(mismatch))
