"""Messages that must not get through, and that nothing changes when they come."""

import unittest

from jeepney import DBusAddress, HeaderFields, new_signal

from watch import C1, EDITOR, MANAGER, SERVICE, Refused, WatchTest, wait_for

NOT_TRUSTED = "com.corvane.platform.Error.NotTrusted"
INVALID = "com.corvane.platform.Error.InvalidBundle"
NO_PORT = "com.corvane.platform.Error.NoSuchPort"


class AForgedMessage(WatchTest):
    def idle_change(self):
        return {"type": "watch-idle-changed", "pkgid": C1}

    def assert_refused(self, error, peer, bundle, **claims):
        before = self.tree(), self.wfctl("key", "list")
        with self.assertRaises(Refused) as refusal:
            self.send(peer, bundle, **claims)
        self.assertEqual(str(refusal.exception), error)
        self.assertEqual((self.tree(), self.wfctl("key", "list")), before)

    def test_in_the_name_of_a_peer_that_is_there_is_refused(self):
        manager = self.peer(MANAGER)
        self.assert_refused(NOT_TRUSTED, self.stranger(), self.idle_change(), claim=MANAGER[0])
        self.assert_nothing_more(manager)

    def test_in_the_name_of_a_peer_that_is_not_there_is_refused(self):
        self.assert_refused(NOT_TRUSTED, self.stranger(), self.idle_change(), claim=MANAGER[0])

    def test_by_one_peer_in_the_name_of_another_is_refused(self):
        self.peer(MANAGER)
        self.assert_refused(NOT_TRUSTED, self.peer(EDITOR), self.idle_change(), claim=MANAGER[0])

    def test_after_a_forged_change_of_owners_is_refused(self):
        manager, forger = self.peer(MANAGER), self.stranger()
        self.send(manager, {"type": "watch-req-watchlists"})  # the service knows the true owner now
        driver = DBusAddress("/org/freedesktop/DBus", bus_name=SERVICE[0], interface="org.freedesktop.DBus")
        forged = new_signal(driver, "NameOwnerChanged", "sss",
                            (MANAGER[0], manager.connection.unique_name, forger.connection.unique_name))
        forged.header.fields[HeaderFields.destination] = SERVICE[0]
        forger.connection.send(forged)
        self.assert_refused(NOT_TRUSTED, forger, self.idle_change(), claim=MANAGER[0])
        self.send(manager, self.idle_change())
        wait_for(lambda: C1 in self.wfctl("current"))

    def test_to_a_port_that_is_not_there_is_refused(self):
        with self.assertRaises(Refused) as refusal:
            self.peer(MANAGER).send(SERVICE[0], "another::port", self.idle_change())
        self.assertEqual(str(refusal.exception), NO_PORT)

    def test_that_is_too_large_is_refused(self):
        self.assert_refused(INVALID, self.peer(MANAGER), {"type": "x", "data/xml_data": b"x" * (8 << 20)})

    def test_with_a_nul_inside_is_refused(self):
        self.assert_refused(INVALID, self.peer(MANAGER), {"type": b"watch-idle\0changed"})


class ASenderNotOnTheList(WatchTest):
    def test_is_refused_by_the_service_without_an_answer(self):
        other = self.peer(("com.example.other", "other::port"))
        before = self.tree()
        self.send(other, {"type": "watch-idle-changed", "pkgid": C1})
        self.wait_for_log("request from not allowed app[com.example.other]")
        self.assert_nothing_more(other)
        self.assertEqual(other.received, [])
        self.assertEqual(self.tree(), before)


if __name__ == "__main__":
    unittest.main()
