#!/usr/bin/env python3
"""Property lists of another maker: writes samples into a folder, or checks a file that we wrote.

usage: property_lists.py make FOLDER
       property_lists.py check-everything FILE
       property_lists.py check-archive FILE
"""

import datetime
import pathlib
import plistlib
import sys

UID = plistlib.UID

EVERYTHING = {
    "text": "plain <&> 'text'",
    "hindi": "रुपया",
    "emoji": "up 🚀 down",
    "empty": "",
    "blank": " ",
    "integers": [0, 1, 127, 128, 255, 256, 65535, 65536, 2**31, 2**32, 2**63 - 1, -1, -128, -(2**63)],
    "reals": [0.5, -2.25, 0.1, 1e300, 123456789.0, float("inf")],
    "yes": True,
    "no": False,
    "bytes": bytes(range(256)),
    "date": datetime.datetime(2026, 11, 22, 3, 30, 0),
    "before": datetime.datetime(1969, 7, 20, 20, 17, 40),
    "nested": {"list": [{"inner": []}, {}]},
    "many": [f"number {i}" for i in range(300)],
    "long": "x" * 70000,
}


def nested(levels, leaf, width=1):
    """The same list again and again, `levels` deep."""
    value = leaf
    for _ in range(levels):
        value = [value] * width
    return value


CYCLE = []
CYCLE.append({"again": CYCLE})


def archive(objects, root=UID(1), **changes):
    whole = {"$archiver": "NSKeyedArchiver", "$version": 100000, "$top": {"root": root},
             "$objects": ["$null"] + objects}
    whole.update(changes)
    return whole


def described(name, *ancestors):
    return {"$classname": name, "$classes": [name, *ancestors, "NSObject"]}


MUTABLE = described("NSMutableDictionary", "NSDictionary")

ARCHIVES = {
    "immutable": archive([
        {"$class": UID(4), "NS.keys": [UID(2)], "NS.objects": [UID(3)]},
        "newsWidgetApiUrl", "https://news.example/feed", described("NSDictionary")]),
    "mutable": archive([
        {"$class": UID(5), "NS.keys": [UID(2)], "NS.objects": [UID(3)]}, "key",
        {"$class": UID(4), "NS.string": "value"}, described("NSMutableString", "NSString"), MUTABLE]),
    "older": archive([
        {"$class": UID(6), "NS.key.0": UID(2), "NS.object.0": UID(3), "NS.key.1": UID(4),
         "NS.object.1": UID(5)}, "one", 1, "two", True, described("NSDictionary")]),
    "shared": archive([
        {"$class": UID(5), "NS.objects": [UID(2), UID(2), UID(3)]},
        {"$class": UID(6), "NS.data": b"\0\1\2"}, {"$class": UID(7), "NS.time": 0.5},
        "not used", described("NSMutableArray", "NSArray"), described("NSMutableData", "NSData"),
        described("NSDate")]),
    "hinted": archive([
        {"$class": UID(2), "NS.objects": []},
        {"$classname": "OurOwnArray", "$classes": ["OurOwnArray", "NSArray", "NSObject"],
         "$classhints": ["NSArray"]}]),
    "text only": archive(["just a text"]),
    "cycle": archive([{"$class": UID(2), "NS.objects": [UID(1)]}, described("NSArray")]),
    "longer cycle": archive([{"$class": UID(3), "NS.objects": [UID(2)]},
                             {"$class": UID(3), "NS.objects": [UID(1)]}, described("NSArray")]),
    "dangling": archive([{"$class": UID(2), "NS.objects": [UID(77)]}, described("NSArray")]),
    "class dangling": archive([{"$class": UID(77), "NS.objects": []}]),
    "unknown class": archive([{"$class": UID(2), "NS.objects": []}, described("SomeView")]),
    "no class": archive([{"NS.objects": []}]),
    "uneven": archive([{"$class": UID(3), "NS.keys": [UID(2)], "NS.objects": []}, "key", MUTABLE]),
    "key not a text": archive([{"$class": UID(3), "NS.keys": [UID(2)], "NS.objects": [UID(2)]}, 5, MUTABLE]),
    "holds nothing": archive([{"$class": UID(2), "NS.objects": [UID(0)]}, described("NSArray")]),
    "wrong string": archive([{"$class": UID(2), "NS.string": 5}, described("NSMutableString", "NSString")]),
    "date of text": archive([{"$class": UID(2), "NS.time": "0.5"}, described("NSDate")]),
    "date not a number": archive([{"$class": UID(2), "NS.time": float("nan")}, described("NSDate")]),
    "date without time": archive([{"$class": UID(2)}, described("NSDate")]),
    "root nothing": archive([], root=UID(0)),
    "root no identifier": archive(["text"], root="text"),
    "no root": archive(["text"], **{"$top": {}}),
    "other archiver": archive(["text"], **{"$archiver": "OtherArchiver"}),
    "other version": archive(["text"], **{"$version": 99999}),
    "no objects": archive([], **{"$objects": []}),
    "a plain list": {"key": "value"},
}

# Doubles at every level: thirty levels would be a billion objects.
ARCHIVES["bomb"] = archive(
    [{"$class": UID(31), "NS.objects": [UID(i + 1), UID(i + 1)]} for i in range(1, 30)]
    + ["leaf", described("NSArray")])

ARCHIVE_OF_OURS = {
    "name": "रुपया",
    "count": 3,
    "share": 0.25,
    "isLive": True,
    "bytes": b"\0\xff",
    "rows": [{"id": "1"}, {"id": "2"}],
}


def unarchived(objects, uid):
    value = objects[uid.data]
    if not isinstance(value, dict):
        return value
    name = objects[value["$class"].data]["$classname"]
    elements = [unarchived(objects, each) for each in value["NS.objects"]]
    if name == "NSArray":
        return elements
    assert name == "NSDictionary", name
    return dict(zip([unarchived(objects, each) for each in value["NS.keys"]], elements))


def write(file, value, fmt=plistlib.FMT_BINARY):
    file.write_bytes(plistlib.dumps(value, fmt=fmt))


def make(folder):
    write(folder / "everything.binary", EVERYTHING)
    write(folder / "everything.xml", EVERYTHING, plistlib.FMT_XML)
    write(folder / "identifiers.binary", [UID(0), UID(255), UID(65536), UID(2**40)])
    for name, value in ARCHIVES.items():
        write(folder / f"{name}.archive", value)
    # What costs too much.
    for levels in (32, 33):
        write(folder / f"nested{levels}.binary", nested(levels - 1, []))
        write(folder / f"nested{levels}.xml", nested(levels - 1, []), plistlib.FMT_XML)
    for name, value in (("unsigned", 2**64 - 1), ("bomb", nested(21, "a text that is shared", 16)),
                        ("textbomb", ["x" * 1_000_000] * 1000), ("cycle", CYCLE)):
        write(folder / f"{name}.binary", value)


def main(command, place):
    place = pathlib.Path(place)
    if command == "make":
        make(place)
    elif command == "check-everything":
        assert plistlib.loads(place.read_bytes()) == EVERYTHING
    elif command == "check-archive":
        whole = plistlib.loads(place.read_bytes(), fmt=plistlib.FMT_BINARY)
        assert whole["$archiver"] == "NSKeyedArchiver" and whole["$version"] == 100000
        assert whole["$objects"][0] == "$null"
        assert unarchived(whole["$objects"], whole["$top"]["root"]) == ARCHIVE_OF_OURS
    else:
        sys.exit(__doc__)


main(*sys.argv[1:])
