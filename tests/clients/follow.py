"""A GTK 3 program, in whose window somebody follows a link: follow.py LINK"""

import sys

import gi

gi.require_version("Gtk", "3.0")
from gi.repository import Gio, Gtk


def follow(window, _):
    context = window.get_display().get_app_launch_context()
    Gio.AppInfo.launch_default_for_uri(sys.argv[1], context)
    Gtk.main_quit()


client = Gtk.Window(title="Client")
client.connect("map-event", follow)
client.show()
Gtk.main()
