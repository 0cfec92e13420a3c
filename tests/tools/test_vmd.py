"""Tests of diffvmd.py."""

import unittest

from tool_test import VMD, ToolTest

VMD_ROWS = (
    ("an end of line", b"a\r\nb\n", b"a\nb", 1, "No newline"),
    ("carriage returns", b"a\r\nb\r\n", b"a\nb\r\r\n", 0, "no difference\n"),
    ("the same bytes", b"a\0\r\n", b"a\0\r\n", 0, "no difference\n"),
    ("a line", b"a\nb\nc\n", b"a\nx\nc\n", 1, "\n a\n-b\n+x\n c\n"),
    ("bytes", b"a\0\r\n", b"a\0\n", 1, "master from byte 2: 0d 0a\nactual from byte 2: 0a"),
    ("an end", bytes(70_000), bytes(70_001), 1, "master from byte 70000: end of file"),
    ("control characters", b"a\n", b"\x1b[2J\xff\n", 1, "+\\x1b[2J\\xff"),
    ("a great difference", b"a\n" * 9_000, b"b\n" * 9_000, 1, "the diff goes on"),
)


class VmdTest(ToolTest):
    def test_models(self):
        for name, master, actual, status, text in VMD_ROWS:
            with self.subTest(name):
                self.check_pair(VMD, master, actual, status, text)


if __name__ == "__main__":
    unittest.main()
