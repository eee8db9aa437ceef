"""Declares what can be configured, lets a group change it, and loads it as another program would."""

import pathlib
import sys
import tempfile

import kaputil

TABLE = """
CREATE TABLE KAP_CFG (Gruppo varchar(30), Applicazione varchar(30), Procedura varchar(30), Modulo varchar(30),
                      Campo varchar(30), Valore varchar(2000), Flag varchar(10))
"""


def open_database(path: pathlib.Path) -> kaputil.classes.Connection:
    database = kaputil.Dispatch("ADODB.Connection")
    database.Open(f"Provider=KapLocal;Data Source={path}")
    return database


def declared(database: kaputil.classes.Connection, group: str) -> kaputil.classes.CFG_Applicazioni:
    """The tree of a program: names, defaults and what is allowed. The group decides whose rows it loads."""
    root = kaputil.Dispatch("KapUtil.CFG_Applicazioni")
    root.Gruppo = group
    root.ActiveConnection = database
    module = root.Add("Vendite").Procedure.Add("Ordini").Moduli.Add("Stampa")
    copies = module.Campi.Add("Copie")
    copies.ValoreDefault = "1"
    copies.ValoriConsentiti = "1|2|3"
    return root


def configure(path: pathlib.Path) -> bool:
    database = open_database(path)
    database.Execute(TABLE)

    # A user of the office changes the number of copies; a value off the list is refused.
    copies = declared(database, "UFFICIO")("Vendite")("Ordini")("Stampa")("Copie")
    try:
        copies.Valore = "9"
    except kaputil.AutomationError as error:
        print("refused:", error)
    copies.Valore = "3"
    copies.Update()

    # The next program of the group finds it; the others keep the default.
    found = {}
    for group in ("UFFICIO", "BANCO"):
        root = declared(database, group)
        root.CaricaCfgPersonalizzati()
        field = root("Vendite")("Ordini")("Stampa")("Copie")
        found[group] = field.Valore
        print(f"{group}: {field.Path} = {field.Valore}")
    return found == {"UFFICIO": "3", "BANCO": "1"}


if __name__ == "__main__":
    with tempfile.TemporaryDirectory() as folder:
        sys.exit(0 if configure(pathlib.Path(folder) / "azienda.db") else 1)
