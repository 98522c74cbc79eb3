"""Every word of the service's messages stands on the page of messages, or on that of backups."""

import pathlib
import re
import unittest

SOURCE = pathlib.Path(__file__).resolve().parents[3]
VOCABULARY = SOURCE / "watchface-service/src/message-vocabulary.h"


def words():
    return re.findall(r'^inline constexpr char k\w+\[\] = "([^"]+)";', VOCABULARY.read_text(), flags=re.M)


def shown():
    text = "".join((SOURCE / "docs" / page).read_text() for page in ("messages.md", "backup.md"))
    code = set(re.findall(r"`([^`\n]+)`", text))
    # What begins with … goes on as the one before it did.
    return code | {word.replace("…", "data/worldclock") for word in code}


class ThePageOfMessages(unittest.TestCase):
    def test_has_every_peer_port_type_key_and_value(self):
        known = words()
        self.assertGreater(len(known), 50)
        self.assertEqual([word for word in known if word not in shown()], [])


if __name__ == "__main__":
    unittest.main()
