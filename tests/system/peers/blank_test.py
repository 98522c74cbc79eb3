"""Previews that show nothing: drawn again, three times in a row and no more, whoever draws them."""

import struct
import unittest
import zlib

from watch import C1, CAPTURE, EDITOR, SERVICE, WatchTest, wait_for

BLANK_AGAIN = " >  preview is invalid!! request to generate!!\n"
DROPPED = " > invalid preview generated more than 3 times!! ignored!!\n"


def png(width, height, rows, depth=8, color_type=6):
    """A picture of rows of samples as they stand in the file; RGBA of 8 bits unless said otherwise."""
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    head = struct.pack(">IIBBBBB", width, height, depth, color_type, 0, 0, 0)
    lines = zlib.compress(b"".join(b"\0" + row for row in rows))
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunk(b"IDAT", lines) + chunk(b"IEND", b"")


BLANK = png(360, 360, [bytes(4 * 360)] * 360)
OPAQUE = png(360, 360, [b"\0\0\0\xff" * 360] * 360)


class APreviewOfAScriptedCapture(WatchTest):
    """The test takes the capture application's name and port and draws what it likes."""

    def setUp(self):
        super().setUp()
        self.capture, self.editor = self.peer(CAPTURE), self.peer(EDITOR)
        self.requests = 0

    def update(self, **more):
        self.send(self.editor, {"type": "watch-setting-updated", "pkgid": C1, "data/label": "Mirel",
                                "data/xml_data": self.result_xml(C1), **more})

    def draw(self, *pictures):
        """Answers a request for each picture; None draws nothing."""
        for picture in pictures:
            self.requests += 1
            wait_for(lambda: len(self.capture.wait(self.requests)) >= self.requests)
            if picture is not None:
                self.preview(C1).write_bytes(picture)
            self.send(self.capture, {"type": "watch-capture-finished", "pkgid": C1})

    def assert_requests(self, count):
        self.assert_nothing_more(self.capture)
        self.assertEqual([message.bundle for message in self.capture.received], [{"pkgName": C1}] * count)

    def test_is_drawn_again_three_times_when_it_is_blank_and_no_more(self):
        self.update()
        self.draw(BLANK, BLANK, BLANK, BLANK)
        self.wait_for_log(DROPPED)
        self.assert_requests(4)
        self.assertEqual(self.log().count(BLANK_AGAIN), 3)
        self.assertEqual({(m.sender, m.port) for m in self.capture.received}, {(SERVICE[0], "")})

    def test_begins_a_new_row_after_the_fourth(self):
        self.update()
        self.draw(BLANK, BLANK, BLANK, BLANK)
        self.wait_for_log(DROPPED)
        self.update()
        self.draw(BLANK, BLANK, BLANK, BLANK)
        self.wait_for_log(DROPPED, 2)
        self.assert_requests(8)

    def test_ends_the_row_when_it_shows_something(self):
        self.update()
        self.draw(BLANK, BLANK, BLANK, OPAQUE)
        self.wait_for_log("preview size:360x360 stride:1440", 4)
        self.update()
        self.draw(BLANK, BLANK, BLANK, OPAQUE)
        self.wait_for_log("preview size:360x360 stride:1440", 8)
        self.assert_requests(8)
        self.assertNotIn(DROPPED, self.log())

    def test_is_not_asked_for_again_when_none_was_drawn(self):
        self.update()
        self.draw(None)
        self.wait_for_log(" > preview for watchface[%s] not found!!\n" % C1)
        self.assert_requests(1)

    def test_counts_as_blank_when_it_is_no_picture(self):
        self.update()
        self.draw(b"not a picture", b"", OPAQUE[:100], BLANK)
        self.wait_for_log(DROPPED)
        self.assertEqual(self.log().count(" > cairo_image_surface_create_from_png failed!! ("), 3)
        self.assert_requests(4)

    def test_that_claims_more_than_4096_pixels_a_side_costs_no_memory(self):
        self.update()
        self.draw(OPAQUE)  # what the first look at a picture costs
        self.wait_for_log("preview size:360x360")
        before = self.peak_memory()
        self.update()
        for row, side in enumerate((20000, 5000), 1):
            self.draw(png(side, side, [bytes(side // 8)] * side, depth=1, color_type=0))
            self.wait_for_log(BLANK_AGAIN, row)
        self.assertLess(self.peak_memory() - before, 8 << 20)  # 100 MB decoded; a sanitizer keeps some of its own

    def peak_memory(self):
        with open("/proc/%d/status" % self.pid_of(SERVICE[0])) as status:
            return next(int(line.split()[1]) << 10 for line in status if line.startswith("VmHWM:"))

    def test_is_drawn_when_the_one_that_is_supplied_is_blank(self):
        icon = self.root / "icon.png"
        icon.write_bytes(BLANK)
        self.update(**{"data/icon_path": str(icon)})
        self.draw(OPAQUE)
        self.wait_for_log("preview size:", 2)
        self.assert_requests(1)
        self.assertEqual(self.log().count(BLANK_AGAIN), 1)


FACE = """<?xml version="1.0" encoding="UTF-8"?>
<face-result format="1" id="%s" version="1" width="360" height="360" shape="square" background="#00000000"
             default-language="en" preview-time="10:08:36" title-key="title">
  <strings language="en"><string key="title">Hole</string></strings>
  <scene>%s</scene>
</face-result>
"""
AROUND_A_HOLE = ('<rect x="0" y="0" width="360" height="%d" fill="#FFFFFF"/>'
                 '<rect x="0" y="%d" width="360" height="%d" fill="#FFFFFF"/>')


class APreviewOfTheCaptureApplication(WatchTest):
    def install(self, scene):
        manager = self.peer(EDITOR)
        self.send(manager, {"type": "watch-setting-created", "pkgid": "com.example.hole", "data/label": "Hole",
                            "data/xml_data": FACE % ("com.example.hole", scene)})
        self.assertEqual(manager.wait()[0].bundle["status"], "success")

    def assert_captures(self, count):
        self.assert_nothing_more()
        finished = "messageType = [watch-capture-finished], watch_name = [com.example.hole]"
        self.assertEqual(self.log().count(finished), count)

    def test_whose_middle_row_is_transparent_is_drawn_four_times_in_all(self):
        self.install(AROUND_A_HOLE % (170, 190, 170))
        self.wait_for_log(DROPPED)
        self.assertEqual(self.log().count(BLANK_AGAIN), 3)
        self.assert_captures(4)

    def test_that_shows_something_left_of_a_transparent_middle_is_drawn_once(self):
        self.install('<rect x="0" y="0" width="90" height="360" fill="#FFFFFF"/>')
        self.wait_for_log("preview size:360x360 stride:1440")
        self.assert_captures(1)
        self.assertNotIn(BLANK_AGAIN, self.log())


if __name__ == "__main__":
    unittest.main()
