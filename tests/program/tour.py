"""A tour of the suite: every tool that is built, on real sample input, with a picture of each window.

    tour.py --program PROGRAM --pictures DIR --samples DIR [--scale 2] [--dark] [--documents DIR [--update]]

Ends with a non-zero status when a window does not come, or when a document shows a picture that the tour does not take.
With --update the documents' folder of pictures then holds what they show as it was taken now, and nothing else.
"""

import argparse
import email.message
import email.policy
import glob
import os
import re
import shutil
import subprocess
import sys

import Xlib.display

from ftp_server import FtpServer
from mail_servers import PASSWORD, USER, MailServers
from session import Session, await_condition

BACKGROUND = 0x5D7F99
# What the window manager draws around a window, in pixels: left, top, right, bottom.
FRAME = (2, 23, 2, 3)
ROUTES = {"Browse the Internet": "web_browser", "FTP client": "ftp_client", "Receive e-mail": "mail_reader", "Send e-mail": "mail_sender", "Text editor": "text_editor",
          "Ping": "ping", "Get local IP": "my_ip", "File manager": "file_manager",
          "Picture viewer": "picture_viewer", "Picture editor": "picture_editor", "Screen capture": "screen_capture"}
"""The tour's route through a tool, by the launcher's item; the others are opened, pictured and closed."""

SUBMENU_TOOLS = ("Ping", "Get local IP")
"""Those among the launcher's submenus; the other items there open windows of the desktop's."""

HARVEST = """Dear Anna,

the beans are in, and there are more of them than we can eat. Come and fetch some
before Sunday, or they go to the neighbours. What the garden gave in all is in the
letter that I attach.

Bea
"""


def same_picture(one, other):
    """Whether two PNG files show the same pixels; their headers carry times."""
    pixels = [subprocess.run(["convert", path, "rgb:-"], check=True, capture_output=True, timeout=60).stdout
              for path in (one, other)]
    return pixels[0] == pixels[1]


def may_open_browser():
    """Whether the browser may put its pages into a sandbox, without which it opens for nobody but root. The kernel lets
    nobody make one in a changed root, for example."""
    if os.geteuid() == 0:
        return True
    return subprocess.run(["unshare", "--user", "true"], stderr=subprocess.DEVNULL, check=False).returncode == 0


class Tour:
    def __init__(self, session, program, pictures, samples):
        self.left_out = set()
        """The pictures that cannot be taken on this system."""
        self.session = session
        self.pictures = pictures
        self.samples = samples
        self._paint_background()
        self.suite = session.start(program)

    def _paint_background(self):
        """A plain colour behind the windows; the screen is black otherwise."""
        screen = Xlib.display.Display(self.session.environment["DISPLAY"])
        root = screen.screen().root
        root.change_attributes(background_pixel=BACKGROUND)
        root.clear_area(0, 0, 0, 0)
        screen.sync()
        screen.close()

    def shot(self, name, *nodes, moving=False):
        """Leaves a picture of the part of the screen that the given windows and menus cover together. `moving`: what
        they show does not come to rest."""
        self.suite.settle(nodes)
        boxes = []
        for node in nodes:
            x, y, width, height = node.rectangle
            left, top, right, bottom = FRAME if node.role != "popup menu" else (0, 0, 0, 0)
            boxes.append((x - left, y - top, x + width + right, y + height + bottom))
        left, top = max(0, min(box[0] for box in boxes)), max(0, min(box[1] for box in boxes))
        right, bottom = max(box[2] for box in boxes), max(box[3] for box in boxes)
        path = os.path.join(self.pictures, f"{name}.png")
        take = self.session.picture if moving else self.picture_at_rest
        take(path, (left, top, right - left, bottom - top))
        print(f"  {path}", flush=True)

    def picture_at_rest(self, path, part):
        """Takes the picture once two in a row are alike, so that no window is caught half painted."""
        def alike():
            self.session.picture(path + ".before.png", part)
            self.session.picture(path, part)
            return same_picture(path + ".before.png", path)

        await_condition(alike, f"the screen to come to rest for {path}")
        os.remove(path + ".before.png")

    def run(self):
        about = self.suite.window(" ", holding="Continue")
        self.shot("about", about)
        self.suite.click(about.find(role="push button", name="Continue"))
        self.launcher = self.suite.window(" ", holding="My Computer")
        self.shot("launcher", self.launcher)
        tools = self.launcher_menus()
        self.settings_notice()
        for button, item in tools:
            getattr(self, ROUTES.get(item, "any_tool"))(button, item)
        self.suite.close(self.launcher)
        status = self.suite.await_end()
        if status != 0:
            raise AssertionError(f"the suite ended with status {status}: {self.suite.log()}")

    def launcher_menus(self):
        """Opens every pop-up; returns the tools that are built, each as its button and item."""
        tools = []
        for button, submenu in (("My Computer", "Control panel items"), ("Internet", "Utilities"),
                                ("Utilities", None)):
            self.suite.click(self.launcher.find(role="push button", name=button))
            menu = self.suite.menu()
            opened = [menu]
            deeper = []
            if submenu:
                self.suite.choose_in_menu(submenu)
                opened.append(self.suite.submenu(submenu))
                deeper = [(button, item.name) for item in opened[-1].children
                          if item.has("showing") and item.name in SUBMENU_TOOLS]
            self.shot("menu-" + button.lower().replace(" ", "-"), self.launcher, *opened)
            tools += [(button, item.name) for item in menu.children
                      if item.has("showing") and item.has("enabled") and item.name != submenu]
            tools += deeper
            self.suite.close_menus()
        return tools

    def settings_notice(self):
        """A settings item where no desktop runs: the message that says so."""
        self.suite.click(self.launcher.find(role="push button", name="My Computer"))
        self.suite.choose_in_menu("Control panel items", "Fonts")
        box = self.suite.window("Vandrel", holding_text="Fonts")
        self.shot("settings-notice", box)
        self.suite.click(box.find(role="push button", name="OK"))
        self.suite.await_no_window("Vandrel")

    def any_tool(self, button, item):
        """Opens a tool, takes its picture and closes it."""
        before = {window.name for window in self.suite.windows()}
        self.suite.click(self.launcher.find(role="push button", name=button))
        self.suite.choose_in_menu(item)
        window = self.suite.await_that(
            lambda: next((each for each in self.suite.windows() if each.name not in before), None),
            f'the window of "{item}"')
        self.shot(re.sub(r"\W+", "-", item.lower()), window)
        self.suite.close(window)
        self.suite.await_no_window(window.name)

    # Mail, with servers on this machine.

    def tool(self, button, item, title):
        """Chooses a tool by its item, or by its submenu and item, and returns its window."""
        self.suite.click(self.launcher.find(role="push button", name=button))
        self.suite.choose_in_menu(*((item,) if isinstance(item, str) else item))
        return self.suite.window(title)

    def confirm(self, title, text, answer="OK"):
        """Answers a message box that says that."""
        box = self.suite.window(title, holding_text=text)
        self.suite.click(box.find(role="push button", name=answer))
        self.suite.await_no_window(title)

    def sample_mail(self, subject, text, attachment=None):
        mail = email.message.EmailMessage(policy=email.policy.SMTP)
        mail["From"] = "Bea <bea@example.org>"
        mail["To"] = "Anna <anna@example.org>"
        mail["Date"] = "Sat, 21 Nov 2026 08:00:00 +0100"
        mail["Subject"] = subject
        mail.set_content(text)
        if attachment:
            with open(os.path.join(self.samples, attachment), "rb") as file:
                mail.add_attachment(file.read(), "application", "rtf", filename=attachment)
        return mail.as_bytes()

    def mail_reader(self, button, item):
        with MailServers() as servers:
            servers.put(self.sample_mail("Seeds", "Dear Anna,\n\nwhich seeds shall I bring?\n\nBea\n"))
            servers.put(self.sample_mail("The harvest", HARVEST, "letter.rtf"))
            window = self.tool(button, item, "Read POP mail")
            self.suite.fill(window, {"POP Server Name": servers.pop, "Username": USER, "Password": PASSWORD})
            self.suite.press(window, "Connect ")
            self.confirm("Vandrel", "You have mail(s) !!")
            self.suite.press(window, ">>")
            self.confirm("Vandrel", "Mail downloaded !!!")
            self.shot("mail-reader", window)
            self.suite.press(window, "Mail list ")
            box = self.suite.window("Mail listing on POP server")
            self.shot("mail-listing", window, box)
            self.confirm("Mail listing on POP server", "The harvest")
            self.suite.press(window, "Disconnect")
            self.suite.press(window, "Connect ")
            self.confirm("Vandrel", "You have mail(s) !!")
            self.suite.close(window)
            self.suite.await_no_window("Read POP mail")

    def mail_sender(self, button, item):
        shutil.copy(os.path.join(self.samples, "letter.rtf"), os.path.join(self.suite.home, "letter.rtf"))
        with MailServers() as servers:
            window = self.tool(button, item, "Send SMTP mail")
            self.suite.fill(window, {
                " Mail Server Domain ": servers.smtp, " To ": "Bea <bea@example.org>", " From": "Anna <anna@example.org>",
                " Subject": "Re: The harvest", " Message": "Dear Bea,\n\nI come on Saturday.\n\nAnna"})
            self.suite.press(window, "Add")
            self.accept_name(self.suite.window("Open"), "letter.rtf")
            self.suite.press(window, "Send")
            self.suite.await_that(
                lambda: "Diconnected" in window.find(role="text", name="Connection Status").text, "the mail to be sent")
            self.shot("mail-sender", window)
            self.suite.close(window)
            self.suite.await_no_window("Send SMTP mail")

    # Files, with a server on this machine that is slow enough for a picture of a transfer.

    def ftp_client(self, button, item):
        with FtpServer("--rate", "2000000") as server:
            self.fill_server(server)
            window = self.tool(button, item, "FTP client")
            self.shot("ftp-idle", window)
            self.log_in(window, server)
            self.suite.click(self.part_of(window, "list item", "seeds.zip"), where=(0.1, 0.5))
            self.shot("ftp-client", window)
            self.receive(window, server)
            self.shot("ftp-transfer", window, moving=True)
            self.suite.press(window, "A b o r t")
            window.await_gone(role="progress bar", name="Transfer")
            self.suite.press(window, "Connect")
            window.find(role="label", name="Connected to : " + server.address)
            self.suite.focus(window.find(role="text", name="Remote file"), times=3)
            self.suite.type("gone.txt")
            self.suite.press(window, "   Delete            File")
            self.part_of(window, "label", "( 550)")
            self.shot("ftp-error", window)
            self.suite.close(window)
            self.suite.await_no_window(window.name)

    def fill_server(self, server):
        for folder in ("Photographs", "letters"):
            os.mkdir(server.path(folder))
        for name, size in ((b"seeds.zip", 1 << 28), (b"inventory 2026.csv", 48213), (b"readme.txt", 1734),
                           ("Grüße aus dem Garten.txt".encode(), 905), ("Übersicht.pdf".encode("latin-1"), 2_310_774)):
            with open(os.path.join(os.fsencode(server.root), name), "wb") as file:
                file.truncate(size)

    def log_in(self, window, server):
        self.suite.fill(window, {"FTP server address": server.address, "Password": PASSWORD})
        self.suite.focus(window.find(role="text", name="Username"), times=2)
        self.suite.type(USER)
        self.suite.press(window, "Connect")
        window.find(role="label", name="Connected to : " + server.address)

    def part_of(self, window, role, part):
        """Waits for something of that role with that part in its name."""
        return self.suite.await_that(
            lambda: next((node for node in window.all(role=role) if part in node.name), None), f'"{part}"')

    def receive(self, window, server):
        """Starts a download and waits until its rate is told."""
        self.suite.click(window.find(role="radio button", name="Binary"))
        self.suite.fill(window, {"Local file": "c:\\seeds.zip"})
        self.suite.press(window, " Download        File")
        question = f"seeds.zip will be download  from {server.address} with local file name : c:\\seeds.zip"
        box = self.suite.window(" ", holding=question)
        self.shot("ftp-question", window, box)
        self.suite.click(box.find(role="push button", name="Yes"))
        self.suite.await_no_window(" ", holding=question)
        self.part_of(window, "label", " left")

    # Files, on the way to a folder that an icon is the shortcut to.

    def file_manager(self, button, item):
        for folder in ("Letters", "Photographs", "Harvest"):
            os.makedirs(os.path.join(self.suite.home, folder), exist_ok=True)
        for name in ("beans.txt", "invoice 12.pdf", "invoice 13.pdf", "letter.rtf", "seeds.csv"):
            with open(os.path.join(self.suite.home, name), "wb") as file:
                file.truncate(20_000)
        window = self.tool(button, item, "File Manager - c:\\")
        folders, files = (window.find(role="list", name=name) for name in ("Folders", "Files"))
        self.suite.click(folders.find(role="list item", name="Letters"), times=2)
        self.suite.window("File Manager - c:\\Letters")
        self.suite.click(window.find(name="Folder shortcut 1"), times=2)
        window.find(role="label", name="c:\\Letters\\")
        self.suite.click(folders.find(role="list item", name="c:\\"), times=2)
        self.suite.window("File Manager - c:\\")
        self.suite.click(files.find(role="list item", name="invoice 12.pdf"))
        self.suite.keys("shift+Down", "shift+Down")
        self.shot("file-manager", window)
        with self.suite.dragging(files.find(role="list item", name="invoice 13.pdf"),
                                 window.find(name="Folder shortcut 1")):
            self.shot("file-manager-drag", window, moving=True)
            self.suite.keys("Escape")
        self.suite.drag(files.find(role="list item", name="invoice 13.pdf"), window.find(name="Delete"))
        question = "Are you sure you want to delete the selected file(s)?"
        box = self.suite.window(" ", holding=question)
        self.shot("file-manager-question", window, box)
        self.suite.click(box.find(role="push button", name="No"))
        self.suite.await_no_window(" ", holding=question)
        self.suite.close(window)
        self.suite.await_no_window(window.name)

    # Pictures, made up here.

    def picture_viewer(self, button, item):
        folder = os.path.join(self.suite.home, "Photographs")
        os.makedirs(folder, exist_ok=True)
        for number, colours in enumerate(("navy-gold", "darkgreen-khaki", "maroon-wheat", "teal-linen") * 4, 1):
            subprocess.run(["convert", "-size", "800x600" if number % 3 else "600x800", "-seed", str(number),
                            f"plasma:{colours}", os.path.join(folder, f"picture {number:02}.jpg")],
                           check=True, timeout=60)
        window = self.tool(button, item, "Picture viewer - c:\\")
        folders = window.find(role="list", name="Folders")
        self.suite.click(folders.find(role="list item", name="Photographs"), times=2)
        self.suite.window("Picture viewer - c:\\Photographs")
        self.suite.press(window, "Select all")
        self.suite.focus(window.find(role="text", name="Slide interval in seconds"), times=2)
        self.suite.type("60")
        self.suite.press(window, "Slide Show")
        self.shot("picture-viewer", window)
        self.suite.press(window, "Thumbnails")
        thumbnails = self.suite.window("Thumbnails view")
        self.shot("thumbnails", thumbnails)
        for each in (thumbnails, window):
            self.suite.close(each)
            self.suite.await_no_window(each.name)

    def picture_editor(self, button, item):
        path = os.path.join(self.suite.home, "hills.jpg")
        subprocess.run(["convert", "-size", "1600x1100", "gradient:#3f7fc8-#f6e3c0", "-fill", "#5d8a54",
                        "-draw", "polygon 0,760 420,560 900,780 1280,600 1600,720 1600,1100 0,1100",
                        "-fill", "#3d6b45", "-draw", "polygon 0,900 500,800 1000,930 1600,850 1600,1100 0,1100",
                        "-fill", "#fff3b0", "-draw", "circle 560,240 560,330", "-seed", "7", "-attenuate", "0.15",
                        "+noise", "Gaussian", path], check=True, timeout=60)
        window = self.tool(button, item, "EditMe!")
        self.suite.choose(window, "File", "Open..")
        self.accept_name(self.suite.window("Open"), "hills.jpg")
        self.suite.stroke(window.find(name="Picture"), (0.3, 0.15), (0.85, 0.6))
        self.suite.choose(window, "Texture", "Emboss")
        self.shot("picture-editor", window)
        self.suite.click(window.find(role="push button", name="Process picture"))
        self.shot("picture-editor-process-menu", window, self.suite.menu())
        self.suite.choose_in_menu("Adjust HSL")
        dialog = self.suite.window("Adjust HSL")
        self.shot("picture-editor-dialog", dialog)
        self.suite.press(dialog, "Cancel")
        self.suite.await_no_window("Adjust HSL")
        self.suite.close(window)
        self.confirm("Vandrel", "Do you want to save the changes made to picture c:\\hills.jpg?", "No")
        self.suite.await_no_window("EditMe!")

    # The network of this machine alone.

    def web_browser(self, button, item):
        if not may_open_browser():
            print("  The browser is left out: this system allows no sandbox for its pages.", flush=True)
            self.left_out.add("web-browser.png")
            return
        window = self.tool(button, (item,), "Internet - ")
        self.suite.press(window, "Home")
        window = self.suite.window("Internet - Start page")
        self.suite.await_text(window, "Address", "vandrel://start")
        self.shot("web-browser", window)
        self.suite.close(window)
        self.suite.await_no_window("Internet - Start page")

    def ping(self, button, item):
        window = self.tool(button, ("Utilities", item), "Ping")
        self.suite.focus(window.find(role="text", name="Address prefix"), times=3)
        self.suite.type("127.0.0.")
        self.suite.fill(window, {"From  Address:": "1"})
        self.suite.focus(window.find(role="text", name="To  Address:"), times=3)
        self.suite.type("9")
        self.suite.press(window, "Scan")
        self.suite.await_that(lambda: "127.0.0. 9" in window.find(role="text", name="  Pinging Status ").text,
                              "the scan to reach its last address")
        self.shot("ping", window)
        self.suite.close(window)
        self.suite.await_no_window("Ping")

    def my_ip(self, button, item):
        """The window before its question: what it answers is this machine's own."""
        window = self.tool(button, ("Utilities", item), "My IP")
        self.shot("my-ip", window)
        self.suite.close(window)
        self.suite.await_no_window("My IP")

    # The screen itself.

    def screen_capture(self, button, item):
        window = self.tool(button, item, "Screen Capture")
        self.suite.press(window, "Capture now")
        preview = self.suite.window("Preview - c:\\ScreenCaptured.bmp")
        self.shot("screen-capture", window)
        self.shot("screen-preview", preview)
        self.suite.close(preview)
        self.suite.await_no_window(preview.name)
        self.suite.close(window)
        self.suite.await_no_window(window.name)

    # The text editor.

    def text_editor(self, button, item):
        shutil.copy(os.path.join(self.samples, "letter.rtf"), os.path.join(self.suite.home, "letter.rtf"))
        self.suite.click(self.launcher.find(role="push button", name=button))
        self.suite.choose_in_menu(item)
        self.editor = self.suite.window("Text - Untitled 1")
        self.shot("text-editor-new", self.editor)
        self.open_letter()
        self.find_and_replace()
        self.colour()
        self.save()
        self.several_documents()
        self.leave_with_changes()

    def open_letter(self):
        self.suite.choose(self.editor, "File", "Open...")
        dialog = self.suite.window("Open")
        self.shot("open-dialog", dialog)
        self.accept_name(dialog, "letter.rtf")
        self.editor = self.suite.window("Text - c:\\letter.rtf")
        self.enlarge_document()
        self.shot("text-editor", self.editor)
        for menu in ("File", "Edit", "Search"):
            self.suite.open_menu(self.editor, menu)
            self.shot(f"text-editor-{menu.lower()}-menu", self.editor)
            self.suite.close_menus()

    def enlarge_document(self):
        """Maximises the active document with a double click on its title bar."""
        child = self.editor.find(role="frame", name="c:\\letter.rtf")
        self.suite.double_click_title(child)

    def document(self):
        """The text of the document that the frame's title names."""
        child = self.editor.find(role="frame", name=self.editor.name.removeprefix("Text - "))
        return child.find(role="text", name="Document text")

    def accept_name(self, dialog, name):
        self.suite.focus(dialog.find(role="text", name="File name:"), times=3)
        self.suite.type(name)
        self.suite.keys("Return")
        self.suite.await_no_window(dialog.name)

    def find_and_replace(self):
        self.suite.choose(self.editor, "Search", "Find...")
        box = self.suite.window("Find")
        self.suite.focus(box.find(role="text"))
        self.suite.type("fleece")
        self.shot("find", self.editor, box)
        self.suite.click(box.find(role="push button", name="OK"))
        self.suite.await_no_window("Find")
        self.suite.choose(self.editor, "Search", "Replace")
        dialog = self.suite.window("Replace text..")
        for label, text in (("Text to replace:", "beans"), ("Text to replace with:", "peas")):
            self.suite.focus(dialog.find(role="text", name=label))
            self.suite.type(text)
        self.shot("replace", self.editor, dialog)
        self.suite.click(dialog.find(role="push button", name="Ok"))
        self.suite.click(dialog.find(role="push button", name="Cancel"))
        self.suite.await_no_window("Replace text..")

    def colour(self):
        self.suite.focus(self.document())
        self.suite.keys("ctrl+Home", "ctrl+shift+Right")
        self.suite.click(self.editor.find(name=" A"), times=2)
        dialog = self.suite.window("Select Color")
        self.shot("colour", dialog)
        self.suite.keys("Escape")
        self.suite.await_no_window("Select Color")

    def save(self):
        self.suite.choose(self.editor, "File", "Save as...")
        dialog = self.suite.window("Save")
        self.shot("save-dialog", dialog)
        self.accept_name(dialog, "copy.rtf")
        self.editor = self.suite.window("Text - c:\\copy.rtf")

    def several_documents(self):
        self.suite.choose(self.editor, "File", "New")
        self.editor = self.suite.window("Text - Untitled 2")
        self.suite.focus(self.document())
        self.suite.type("A second document beside the first.")
        self.suite.choose(self.editor, "Window", "Tile")
        self.shot("tiled-documents", self.editor)

    def leave_with_changes(self):
        self.suite.close(self.editor)
        box = self.suite.window(" ", holding_text="Do you want to save changes")
        self.shot("save-question", self.editor, box)
        self.suite.click(box.find(role="push button", name="No"))
        self.suite.await_no_window(self.editor.name)


def shown_pictures(documents):
    """The names of the pictures that the documents show, those of the folder and of the one above."""
    paths = glob.glob(os.path.join(documents, "*.md")) + glob.glob(os.path.join(documents, os.pardir, "*.md"))
    shown = set()
    for path in paths:
        with open(path, encoding="utf-8") as document:
            shown.update(re.findall(r"\]\((?:docs/)?pictures/([^)]+)\)", document.read()))
    return shown


def check_documents(documents, pictures, left_out, update):
    """Ends the program when a shown picture was not taken, but for those that could not be; replaces the documents'
    pictures where that is asked for."""
    shown = shown_pictures(documents)
    missing = shown.difference(os.listdir(pictures))
    if not update:
        missing -= left_out
    if missing:
        sys.exit("The tour does not take what the documents show: " + ", ".join(sorted(missing)))
    if update:
        kept = os.path.join(documents, "pictures")
        shutil.rmtree(kept)
        os.mkdir(kept)
        for name in shown:
            shutil.copy(os.path.join(pictures, name), kept)


def main():
    parser = argparse.ArgumentParser(description="Drives the suite through every tool and takes its pictures.")
    for name in ("program", "pictures", "samples"):
        parser.add_argument("--" + name, required=True)
    parser.add_argument("--scale", type=float, default=1, help="how large everything is shown (1)")
    parser.add_argument("--dark", action="store_true", help="light text on dark windows")
    parser.add_argument("--documents", help="the folder of the documents whose pictures must be among those taken")
    parser.add_argument("--update", action="store_true", help="puts them there")
    options = parser.parse_args()
    os.makedirs(options.pictures, exist_ok=True)
    print("Touring the suite; a picture of each window:")
    with Session(options.scale, options.dark) as session:
        try:
            tour = Tour(session, os.path.abspath(options.program), options.pictures, options.samples)
            tour.run()
        except AssertionError as failure:
            session.picture(os.path.join(options.pictures, "failed.png"))
            sys.exit(f"The tour failed: {failure}")
    if options.documents:
        check_documents(options.documents, options.pictures, tour.left_out, options.update)


if __name__ == "__main__":
    main()
