"""Opens the page of a link as a small script would: decodes it and calls xdg-open."""
import base64
import json
import sys

from gi.repository import GLib

record = json.loads(base64.b64decode(sys.argv[1].partition(":")[2]))
GLib.spawn_async(["/usr/bin/xdg-open", record["WebPage"]])
