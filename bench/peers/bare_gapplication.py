"""An application without a window that takes links and opens nothing."""
from gi.repository import Gio

application = Gio.Application(application_id="com.vastel.Bare", flags=Gio.ApplicationFlags.HANDLES_OPEN)
application.connect("activate", Gio.Application.hold)
application.connect("open", lambda *arguments: None)
application.run()
