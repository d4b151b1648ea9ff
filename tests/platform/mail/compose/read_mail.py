"""Reads one message with Python's own parser and prints what it finds as JSON.

    read_mail.py FILE
"""
import base64
import email
import email.header
import email.policy
import email.utils
import json
import sys


def name_of(value):
    return str(email.header.make_header(email.header.decode_header(value)))


def addresses(field):
    """The newer parser puts a blank between the encoded words of a name, so the names are read by the older."""
    if field not in parsed:
        return []
    names = [name_of(name) for name, _ in email.utils.getaddresses([raw[field]])]
    return list(zip(names, [address.addr_spec for address in parsed[field].addresses], strict=True))


def attachment(part):
    # get_filename() would strip the name's blanks, and get_content() would decode texts to characters.
    return {
        "name": part["Content-Disposition"].params["filename"],
        "type": part.get_content_type(),
        "disposition": part.get_content_disposition(),
        "octets": base64.b64encode(part.get_payload(decode=True)).decode("ascii"),
    }


def defects(message):
    found = []
    for part in message.walk():
        found += [type(d).__name__ for d in part.defects]
        for name, value in part.items():
            found += [f"{name}: {type(d).__name__}" for d in getattr(value, "defects", [])]
    return found


with open(sys.argv[1], "rb") as file:
    octets = file.read()
parsed = email.message_from_bytes(octets, policy=email.policy.default)
raw = email.message_from_bytes(octets, policy=email.policy.compat32)
text = parsed if not parsed.is_multipart() else parsed.get_payload(0)
lines = octets.split(b"\r\n")
print(json.dumps({
    "from": addresses("From"),
    "to": addresses("To"),
    "cc": addresses("Cc"),
    "fields": [name for name, _ in parsed.items()],
    "subject": str(parsed["Subject"]),
    "date": parsed["Date"].datetime.isoformat(),
    "id": str(parsed["Message-ID"]),
    "version": str(parsed["MIME-Version"]),
    "type": text.get_content_type(),
    "charset": text.get_content_charset(),
    "encoding": str(text["Content-Transfer-Encoding"]),
    "text": text.get_payload(decode=True).decode("utf-8"),
    "attachments": [attachment(p) for p in parsed.get_payload()[1:]] if parsed.is_multipart() else [],
    "defects": defects(parsed),
    "longest": max(len(line) for line in lines),
    "ends in a line break": lines[-1] == b"",
    "bare line breaks": any(b"\r" in line or b"\n" in line for line in lines),
    "seven bit": all(octet < 0x80 for octet in octets),
}))
