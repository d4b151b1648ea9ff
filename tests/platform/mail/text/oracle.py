"""Says as JSON what Python's email package finds in a mail: its fields, its plain texts and its attachments."""

import email
import email.policy
import json
import sys

with open(sys.argv[1], "rb") as file:
    octets = file.read()
mail = email.message_from_bytes(octets, policy=email.policy.default)


def size_of(part):
    """The octets of a part. The package reads every line break as a single LF; those of the mail may be CR LF."""
    payload = part.get_payload(decode=True)
    encoded = part.get("Content-Transfer-Encoding", "7bit") in ("base64", "x-uuencode")
    return len(payload) + (0 if encoded or b"\r\n" in payload or b"\r\n" not in octets else payload.count(b"\n"))



texts = []
attachments = []
for part in mail.walk():
    if part.is_multipart():
        continue
    if part.get_content_type() == "text/plain" and not part.is_attachment():
        texts.append(part.get_content())
    elif part.get_filename():
        attachments.append({
            "name": part.get_filename().replace("\\", "/").split("/")[-1],
            "type": part.get_content_type(),
            "size": size_of(part),
        })
json.dump({
    "subject": str(mail["Subject"] or ""),
    "date": str(mail["Date"] or ""),
    "senders": [address.addr_spec for address in mail["From"].addresses] if mail["From"] else [],
    "names": [address.display_name for address in mail["From"].addresses] if mail["From"] else [],
    "texts": texts,
    "attachments": attachments,
}, sys.stdout)
