"""Reads what a JVM under -Xcheck:jni had to say about one class, out of its output."""

import collections
import re

SHOWN = 10
OUR_CLASS = 'com.qarvo.kel.util.WindowsUtil.'

COMPLAINT = re.compile(
    r'(WARNING in native method|WARNING: JNI|WARNING: Calling other JNI|FATAL ERROR in native method)')
FRAME = re.compile(r'^\s+at |^\s+- ')

# The library asks for these two by descriptor, as it has always done; every JVM resolves them.
REQUIRED_DESCRIPTORS = ('"Ljava/util/ArrayList;"', '"Lcom/qarvo/kel/util/WinServerFeature;"')


def complaints(output):
    """Returns the complaints with a frame of our class, each as one text, in the order of the output."""
    found = []
    block = None
    for line in output.splitlines():
        start = COMPLAINT.search(line)
        if start:
            block = [line[start.start():]]
            found.append(block)
        elif block is not None and FRAME.match(line):
            block.append(line)
        else:
            block = None
    ours = [block for block in found if any(OUR_CLASS in frame for frame in block[1:])]
    return ['\n'.join(block) for block in ours if not is_required(block[0])]


def digest(found):
    """A report of complaints that stays readable when there are thousands: each one once, with its number."""
    counts = collections.Counter(found)
    shown = [f'{count} times: {text}' for text, count in counts.most_common(SHOWN)]
    rest = len(counts) - len(shown)
    return '\n\n'.join(shown) + (f'\n\nand {rest} more' if rest else '')


def is_required(message):
    return 'bad class descriptor' in message and any(name in message for name in REQUIRED_DESCRIPTORS)
