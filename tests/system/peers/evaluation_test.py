"""The durations that any application keeps with the service, over its open port."""

import collections
import re
import threading
import time
import unittest

from watch import C1, EDITOR, MANAGER, SERVICE, Refused, WatchTest

STORE = (SERVICE[0], "evaluation-helper-port")
APP = ("com.example.evaluation", "back")
NOT_TRUSTED = "com.corvane.platform.Error.NotTrusted"
NO_PORT = "com.corvane.platform.Error.NoSuchPort"
NO_ROOM = "13"
MOST_OF_ONE, MOST = 64, 512


def save(duration, face=C1):
    return {"evaluation-helper-op": "evaluation-helper-op-save-duration",
            "evaluation-helper-watchface-name": face, "evaluation-helper-data-duration": duration}


def load(face=C1):
    return {"evaluation-helper-op": "evaluation-helper-op-load-duration",
            "evaluation-helper-watchface-name": face}


class EvaluationTest(WatchTest):
    def ask(self, peer, request):
        """The one reply to a request."""
        before = len(peer.received)
        peer.send(*STORE, request, trusted=False)
        reply, = peer.wait(before + 1)[before:]
        self.assertEqual((reply.sender, reply.port), STORE)
        return reply.bundle

    def entries(self):
        """{(application, face): duration} of all that is kept."""
        lines = self.wfctl("pref", "list", SERVICE[0]).splitlines()
        found = (re.match(r"(.*?)\+(.*)\+evaluation-helper-data-duration=(.*)", line) for line in lines)
        return {(m[1], m[2]): m[3] for m in found if m}


class AnEvaluationStore(EvaluationTest):
    def assert_refused(self, error, peer, to, bundle, **how):
        with self.assertRaises(Refused) as refusal:
            peer.send(*to, bundle, **how)
        self.assertEqual(str(refusal.exception), error)
        self.assertEqual(self.entries(), {})

    def test_saves_and_loads_for_any_application(self):
        peer = self.peer(APP, trusted=False)
        self.assertEqual(self.ask(peer, save("3 min 시간")), dict(save("3 min 시간"), **{"evaluation-helper-ret": "0"}))
        self.assertEqual(self.ask(peer, load()), dict(load(), **{"evaluation-helper-ret": "0",
                                                                 "evaluation-helper-data-duration": "3 min 시간"}))
        self.assertEqual(self.entries(), {(APP[0], C1): "3 min 시간"})

    def test_has_nothing_for_an_application_that_saved_nothing(self):
        self.ask(self.peer(APP, trusted=False), save("350"))
        reply = self.ask(self.peer(("com.example.other", "back"), trusted=False), load())
        self.assertEqual(reply.pop("evaluation-helper-data-duration"), "")
        self.assertNotEqual(reply.pop("evaluation-helper-ret"), "0")
        self.assertEqual(reply, load())

    def test_keeps_what_it_has_when_the_service_is_started_again(self):
        peer = self.peer(APP, trusted=False)
        self.ask(peer, save("350"))
        self.restart_service()
        self.assertEqual(self.ask(peer, load())["evaluation-helper-data-duration"], "350")

    def test_answers_nobody_but_the_port_that_asked(self):
        peer = self.peer(APP, trusted=False)
        others = [self.peer(("com.example.other", "back"), trusted=False), self.peer(EDITOR), self.peer(MANAGER)]
        peer.own("%s.open.other" % APP[0])
        self.ask(peer, save("350"))
        self.ask(peer, load())
        self.assert_nothing_more(peer, *others)
        self.assertEqual(len(peer.received), 2)
        for other in others:
            self.assertEqual(other.received, [])

    def test_does_not_answer_whoever_has_no_port(self):
        peer = self.peer((APP[0], None))
        peer.send(*STORE, save("350"), trusted=False)
        self.wait_for_log("remoteAppId[com.example.evaluation] or remotePort[] is empty!!")
        self.assert_nothing_more(peer)
        self.assertEqual((peer.received, self.entries()), ([], {}))

    def test_gets_no_trusted_message(self):
        self.assert_refused(NO_PORT, self.peer(MANAGER), STORE, save("350"))

    def test_is_the_only_thing_that_gets_untrusted_messages(self):
        peer = self.peer(APP, trusted=False)
        self.assert_refused(NO_PORT, peer, SERVICE, {"type": "watch-idle-changed", "pkgid": C1}, trusted=False)

    def test_takes_nothing_in_the_name_of_another(self):
        self.peer(APP, trusted=False)
        self.assert_refused(NOT_TRUSTED, self.stranger(), STORE, save("350"), claim=APP[0], trusted=False)
        self.assert_refused(NOT_TRUSTED, self.peer(("com.example.other", "back"), trusted=False), STORE,
                            save("350"), claim=APP[0], trusted=False)


class AFloodOfDurations(EvaluationTest):
    PEERS, EACH = 10, 80

    def flood(self, peer):
        for number in range(self.EACH):
            self.codes[peer.app, self.ask(peer, save("x", "face %d" % number))["evaluation-helper-ret"]] += 1

    def ask_for_date(self, manager):
        """Seconds until the service has answered the phone."""
        begin = time.monotonic()
        before = len(manager.received)
        self.send(manager, {"type": "watch-icu-convert", "data/timestamp": "0", "data/skeleton": "y",
                            "data/bestpattern": "true"})
        self.assertEqual(manager.wait(before + 1)[-1].bundle["formattedstring"], "1970")
        return time.monotonic() - begin

    def test_ends_at_the_limits_and_keeps_nobody_waiting(self):
        self.codes = collections.Counter()
        manager = self.peer(MANAGER)
        self.ask_for_date(manager)  # the service is up, with its date formats read
        peers = [self.peer(("com.example.flood%d" % n, "back"), trusted=False) for n in range(self.PEERS)]
        threads = [threading.Thread(target=self.flood, args=(peer,)) for peer in peers]
        for thread in threads:
            thread.start()
        waits = [self.ask_for_date(manager)]
        while any(thread.is_alive() for thread in threads):
            waits.append(self.ask_for_date(manager))
        self.assertLess(max(waits), 5)
        self.assertEqual(sum(self.codes.values()), self.PEERS * self.EACH)
        self.assertEqual({code for _app, code in self.codes}, {"0", NO_ROOM})
        kept = collections.Counter(app for app, _face in self.entries())
        self.assertEqual(kept, {app: count for (app, code), count in self.codes.items() if code == "0"})
        self.assertEqual(sum(kept.values()), MOST)
        self.assertLessEqual(max(kept.values()), MOST_OF_ONE)
        self.assertIn("refused: more than %d entries in all" % MOST, self.log())

    def test_leaves_what_was_kept_before(self):
        peer = self.peer(APP, trusted=False)
        self.ask(peer, save("350"))
        self.assertEqual(self.ask(peer, save("x" * 20000))["evaluation-helper-ret"], NO_ROOM)
        self.assertEqual(self.ask(peer, save("x" * 20000, "another"))["evaluation-helper-ret"], NO_ROOM)
        self.assertEqual(self.entries(), {(APP[0], C1): "350"})
        self.assertEqual(self.ask(peer, save("351"))["evaluation-helper-ret"], "0")


if __name__ == "__main__":
    unittest.main()
