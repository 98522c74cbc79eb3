#!/usr/bin/python3
"""A backup agent that keeps what a watch sends it in a folder, its cloud, and gives it back to any watch.

    agent.py backup CLOUD           prints a line for every message that it received
    agent.py restore CLOUD [FACE]   prints a line for every item that it gave; FACE becomes the current one
"""

import json
import os
import pathlib
import shutil
import sys

sys.path.insert(0, os.environ["WATCH_EXAMPLES"])

from peer import Peer  # noqa: E402

AGENT = ("com.corvane.watch-utils.service", "watch-utils-service::localport")
SERVICE = ("com.corvane.watchface-service", "watchface-service::localport")
END_OF_BACKUP = {"message": "backup_finished"}
END_OF_RESTORE = {"message": "restore_finished"}


class Agent(Peer):
    def __init__(self, address=None):
        super().__init__(*AGENT, address=address)

    def say(self, bundle):
        self.send(*SERVICE, bundle)

    def ask_for_backup(self):
        self.received.clear()
        self.say({"operation": "corvane_cloud_backup"})

    def messages(self):
        """Those of a backup as they come, the last one included."""
        number = 0
        while True:
            if len(self.wait(number + 1)) <= number:
                raise TimeoutError("the backup has no end")
            yield self.received[number].bundle
            if self.received[number].bundle == END_OF_BACKUP:
                return
            number += 1

    def backup(self):
        self.ask_for_backup()
        return list(self.messages())

    def give(self, item):
        self.say({"operation": "corvane_cloud_restore", **item})

    def begin(self):
        self.give({"message": "restore_start"})

    def finish(self):
        """Until the service has acknowledged it."""
        self.received.clear()
        self.say({"message": "restore_finished"})
        self.wait(1)

    def restore(self, items, face=None):
        self.begin()
        for item in items:
            self.give(item)
            yield item
        if face:
            self.give({"type": "watch-idle-changed", "pkgid": face})
            yield {"type": "watch-idle-changed", "pkgid": face}
        self.finish()


def keep(cloud, messages):
    """Stores the items, with copies of the images that they name."""
    items = [dict(message) for message in messages if message != END_OF_BACKUP]
    for item in items:
        if item["type"] == "image":
            copy = pathlib.Path(cloud) / item["bg_type"] / item["file_name"]
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(item["file_path"], copy)
            item["file_path"] = str(copy)
    (pathlib.Path(cloud) / "items.json").write_text(json.dumps(items))


def kept(cloud):
    return json.loads((pathlib.Path(cloud) / "items.json").read_text())


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    agent = Agent()
    if sys.argv[1] == "backup":
        agent.ask_for_backup()
        received = []
        for message in agent.messages():
            received.append(message)
            print(message.get("type"), flush=True)
        keep(sys.argv[2], received)
    else:
        for item in agent.restore(kept(sys.argv[2]), *sys.argv[3:]):
            print(item["type"], flush=True)


if __name__ == "__main__":
    main()
