"""Contacts and messages: a mail client written in Python, and what other programs read of the files."""

import email
import email.policy
import json
import os
import pathlib
import subprocess
import tempfile
import unittest

import kaputil

# What an independent reader makes of a card. It runs by itself: the interpreter of this test may lack it.
READ_CARD = """
import json, sys, vobject
card = vobject.readOne(open(sys.argv[1], encoding="utf-8", newline="").read())
name = card.n.value
print(json.dumps({
    "version": card.version.value, "fn": card.fn.value, "family": name.family, "given": name.given,
    "prefix": name.prefix, "email": card.email.value, "tel": card.tel.value, "street": card.adr.value.street,
    "org": getattr(card, "org", None) and card.org.value, "note": getattr(card, "note", None) and card.note.value}))
"""


def without_preloaded_libraries():
    return {name: value for name, value in os.environ.items() if name != "LD_PRELOAD"}


def interpreter_with_vobject():
    """The first python3 of the search path that has the reader (package python3-vobject)."""
    for folder in os.get_exec_path():
        candidate = os.path.join(folder, "python3")
        if os.path.exists(candidate) and subprocess.run(
                [candidate, "-c", "import vobject"], env=without_preloaded_libraries(), check=False,
                stderr=subprocess.DEVNULL).returncode == 0:
            return candidate
    raise AssertionError("no python3 has the package vobject")


def read_card(file):
    printed = subprocess.run([interpreter_with_vobject(), "-c", READ_CARD, str(file)], check=True,
                             env=without_preloaded_libraries(), capture_output=True).stdout
    return json.loads(printed)


class Recorded:
    """Writes down what is done to an object, in order."""

    def __init__(self, log):
        object.__setattr__(self, "log", log)

    def __setattr__(self, name, value):
        self.log.append(f"{name} = {value}")


class Contact(Recorded):
    CustomerID = Email1Address = FirstName = LastName = CompanyName = ""
    HomeTelephoneNumber = HomeAddress = GovernmentIDNumber = FileAs = ""

    def Move(self, folder):
        self.log.append(f"Move {folder.name}")

    def Save(self):
        self.log.append("Save")

    def Delete(self):
        self.log.append("Delete")


class Items:
    def __init__(self, log):
        self.log, self.found, self.Count = log, None, 7

    def Find(self, text):
        self.log.append(f"Find {text}|")
        return self.found


class Folder:
    def __init__(self, log, name):
        self.log, self.name, self.Items, self.folders = log, name, Items(log), {}

    @property
    def Folders(self):
        return self

    def Item(self, name):
        self.log.append(f"Item {name}")
        if name not in self.folders:
            raise kaputil.AutomationError(-2147221233, "oggetto non trovato")
        return self.folders[name]


class Attachments:
    def __init__(self, log):
        self.log = log

    def Add(self, path):
        self.log.append(f"Add {path}")


class Message(Recorded):
    To = Subject = Body = HTMLBody = ""

    def __init__(self, log):
        super().__init__(log)
        object.__setattr__(self, "Attachments", Attachments(log))

    def Display(self):
        self.log.append("Display")


class Client:
    """What the library asks of "Outlook.Application"."""

    def __init__(self):
        self.log = []
        self.root = Folder(self.log, "root")
        self.contacts = Folder(self.log, "contatti")
        store = self.root.folders["Ufficio"] = Folder(self.log, "Ufficio")
        self.customers = store.folders["Clienti"] = Folder(self.log, "Clienti")

    def GetNamespace(self, name):
        self.log.append(f"GetNamespace {name}")
        return self

    @property
    def Folders(self):
        return self.root

    def GetDefaultFolder(self, number):
        self.log.append(f"GetDefaultFolder {number}")
        return self.contacts

    def CreateItem(self, number):
        self.log.append(f"CreateItem {number}")
        return Contact(self.log) if number == 2 else Message(self.log)


def person():
    contact = kaputil.Dispatch("KapUtil.CEMail")
    contact.EMail, contact.CodAna = "mario@rossi.it", "C12"
    contact.Nome, contact.Cognome = "Mario", "Rossi"
    contact.Telefono, contact.Indirizzo = "0541 123456", "Via Roma 1; scala B"
    return contact


FIELDS = [
    "CustomerID = mario@rossi.it", "Email1Address = mario@rossi.it", "FirstName = Mario", "LastName = Rossi",
    "CompanyName = ", "HomeTelephoneNumber = 0541 123456", "HomeAddress = Via Roma 1; scala B",
    "GovernmentIDNumber = C12", "FileAs = C12 - Rossi Mario"]


class RegisteredClient(unittest.TestCase):
    def setUp(self):
        self.client = Client()
        kaputil.register("Outlook.Application", lambda: self.client)
        self.addCleanup(kaputil.unregister, "Outlook.Application")

    def test_a_new_contact_gets_every_field_in_order_and_is_moved_before_it_is_saved(self):
        self.assertIs(person().Update(), True)
        self.assertEqual(self.client.log, [
            "GetNamespace MAPI", "GetDefaultFolder 10", "Find [CustomerID] = mario@rossi.it|", "CreateItem 2",
            *FIELDS, "Move contatti", "Save"])

    def test_a_contact_that_is_found_is_changed_in_place(self):
        self.client.contacts.Items.found = Contact(self.client.log)
        self.assertIs(person().Update(), True)
        self.assertEqual(self.client.log, [
            "GetNamespace MAPI", "GetDefaultFolder 10", "Find [CustomerID] = mario@rossi.it|", *FIELDS, "Save"])

    def test_a_folder_is_reached_by_its_path(self):
        self.assertIs(person().Update("Ufficio/Clienti"), True)
        self.assertEqual(self.client.log[:3], ["GetNamespace MAPI", "Item Ufficio", "Item Clienti"])
        self.assertEqual(self.client.log[-2:], ["Move Clienti", "Save"])
        self.assertEqual(person().Count("Ufficio/Clienti"), 7)

    def test_a_contact_is_looked_for_with_a_blank_before_it_is_deleted(self):
        self.client.contacts.Items.found = Contact(self.client.log)
        self.assertIs(person().Delete(), True)
        self.assertEqual(self.client.log[2:], ["Find  [CustomerID] = mario@rossi.it|", "Delete"])

    def test_the_clients_error_is_told_and_not_raised(self):
        contact = person()
        self.assertIs(contact.Update("Ufficio/Manca"), False)
        message = contact.IClassi_Errore.MsgToString()
        self.assertTrue(message.endswith("la Classe.\r\noggetto non trovato\r\n"), message)

    def test_an_exception_of_the_client_is_told_like_any_error(self):
        def fail(_):
            raise ValueError("nessun profilo")

        self.client.GetNamespace = fail
        contact = person()
        self.assertIs(contact.Update(), False)
        message = contact.IClassi_Errore.MsgToString()
        self.assertTrue(message.endswith("la Classe.\r\nnessun profilo\r\n"), message)

    def test_a_message_that_the_client_refuses_raises_its_exception(self):
        def fail(_):
            raise ValueError("nessun profilo")

        self.client.CreateItem = fail
        with self.assertRaisesRegex(ValueError, "nessun profilo"):
            kaputil.kapInviaEMail("mario@rossi.it", "Prova", "Testo", "", "")

    def test_counting_goes_on_behind_a_step_that_fails(self):
        contact = person()
        self.assertIs(contact.Count("Manca/Clienti"), kaputil.Empty)
        self.assertEqual(self.client.log, ["GetNamespace MAPI", "Item Manca", "Item Clienti"])

    def test_a_message_is_shown_with_its_attachments(self):
        kaputil.kapInviaEMail("a@x.it", "Oggetto", "testo", "<b>x</b>", "uno.txt,,due.txt")
        self.assertEqual(self.client.log, [
            "CreateItem 0", "To = a@x.it", "Subject = Oggetto", "Body = testo", "Add uno.txt", "Add ", "Add due.txt",
            "Display"])

    def test_a_message_that_has_no_attributes_yet_gets_them(self):
        class Bare:
            def Display(self):
                self.Shown = True

        message = Bare()
        self.client.CreateItem = lambda _: message
        kaputil.kapInviaEMail("a@x.it", "Oggetto", "testo", "", "")
        self.assertEqual(vars(message), {"To": "a@x.it", "Subject": "Oggetto", "Body": "testo", "Shown": True})

    def test_a_message_without_a_plain_body_gets_the_other(self):
        kaputil.kapInviaEMail("a@x.it", "Oggetto", sBodyHtml="<b>x</b>")
        self.assertEqual(self.client.log[3:], ["HTMLBody = <b>x</b>", "Display"])


class Files(unittest.TestCase):
    """What the library's own mail client leaves, read by programs that know nothing of it."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.home = pathlib.Path(folder.name)
        for name, value in {"KAPUTIL_HOME": folder.name, "DISPLAY": None, "WAYLAND_DISPLAY": None}.items():
            self.put_variable(name, value)
        kaputil.message_log(str(self.home / "messaggi.log"))
        self.addCleanup(kaputil.message_log, None)

    def put_variable(self, name, value):
        before = os.environ.get(name)
        self.addCleanup(lambda: self.restore(name, before))
        self.restore(name, value)

    @staticmethod
    def restore(name, value):
        if value is None:
            os.environ.pop(name, None)
        else:
            os.environ[name] = value

    def test_a_contact_is_read_by_another_program(self):
        contact = person()
        contact.RagioneSociale = "Ferramenta, Rossi & Figli " + "è€" * 40
        self.assertIs(contact.Update(), True)
        (file,) = self.home.glob("contacts/Personale/Contatti/*.vcf")
        self.assertEqual(read_card(file), {
            "version": "4.0", "fn": "C12 - Rossi Mario", "family": "Rossi", "given": "Mario", "prefix": "",
            "email": "mario@rossi.it", "tel": "0541 123456", "street": "Via Roma 1; scala B",
            "org": [contact.RagioneSociale], "note": None})

    def test_a_contact_of_another_program_is_changed_and_keeps_the_rest(self):
        folder = self.home / "contacts/Personale/Contatti"
        folder.mkdir(parents=True)
        file = folder / "rossi.vcf"
        file.write_bytes("\r\n".join([
            "BEGIN:VCARD", "VERSION:3.0", "FN:Rossi", "N:Rossi;Mario;;Dott.;", "EMAIL;TYPE=INTERNET:mario@rossi.it",
            "NOTE:due\\nrighe", "X-KAPUTIL-CUSTOMERID:mario@rossi.it", "END:VCARD", ""]).encode())
        contact = person()
        contact.Nome = "Anna"
        self.assertIs(contact.Update(), True)
        self.assertEqual(contact.Count(), 1)
        card = read_card(file)
        self.assertEqual((card["given"], card["prefix"], card["note"]), ("Anna", "Dott.", "due\nrighe"))

    def draft(self, *arguments):
        kaputil.kapInviaEMail(*arguments)
        (file,) = self.home.glob("drafts/*.eml")
        message = email.message_from_bytes(file.read_bytes(), policy=email.policy.default)
        self.assertEqual([part.defects for part in message.walk() if part.defects], [])
        return message

    def test_a_message_is_read_by_another_program(self):
        body = "Buongiorno,\r\nè € " + "x" * 2000 + "\r\n.\r\nFrom qui\r\n"
        message = self.draft("Anna Rossi <anna@x.it>; \"B; C\" <bc@x.it>", "Fattura n. 12: però €", body)
        self.assertEqual([str(address) for address in message["To"].addresses],
                         ["Anna Rossi <anna@x.it>", "\"B; C\" <bc@x.it>"])
        self.assertEqual(message["Subject"], "Fattura n. 12: però €")
        self.assertEqual(message["X-Unsent"], "1")
        self.assertIsNotNone(message["Date"].datetime.tzinfo)
        self.assertEqual(message.get_content_type(), "text/plain")
        self.assertEqual(message.get_content(), body)

    def test_attachments_come_out_as_they_went_in(self):
        content = bytes(range(256)) * 10
        names = ["Però (1).dat", "nota.txt", "vecchio.eml"]
        for name in names:
            (self.home / name).write_bytes(content)
        files = ",".join(str(self.home / name) for name in names)
        message = self.draft("a@x.it", "Oggetto", "", "<p>è</p>", files)
        self.assertEqual(message.get_content_type(), "multipart/mixed")
        self.assertEqual(message.get_body(("html",)).get_content().rstrip("\n"), "<p>è</p>")
        attached = list(message.iter_attachments())
        self.assertEqual([part.get_filename() for part in attached], names)
        self.assertEqual([part.get_payload(decode=True) for part in attached], [content] * 3)

    def test_a_recipient_without_an_address_is_left_for_the_user(self):
        message = self.draft("Mario Rossi", "Oggetto", "x")
        self.assertEqual(message["Subject"], "Oggetto")


if __name__ == "__main__":
    unittest.main()
