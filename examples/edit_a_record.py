"""Reads a record of a database in a file, changes it and saves it, under the eyes of a second user."""

import pathlib
import sys
import tempfile

import kaputil

QUERY = "SELECT * FROM Clienti WHERE Codice = 12"


def open_database(path: pathlib.Path) -> kaputil.classes.Connection:
    database = kaputil.Dispatch("ADODB.Connection")
    database.Open(f"Provider=KapLocal;Data Source={path}")
    return database


def create_customers(database: kaputil.classes.Connection) -> None:
    """A table whose row version, AggID, tells who saved last."""
    database.Execute("CREATE TABLE Clienti (Codice int PRIMARY KEY, Nome varchar(40), Fido money, AggID timestamp)")
    database.Execute("INSERT INTO Clienti (Codice, Nome, Fido) VALUES (12, 'Ferramenta Rossi', 1500)")


def read(database: kaputil.classes.Connection) -> kaputil.classes.CProprieta:
    """The customer as a property string."""
    text = kaputil.Ref("")
    kaputil.DB_Read(database, QUERY, text)
    record = kaputil.Dispatch("KapUtil.CProprieta")
    record.Scrivi("", text.value)
    return record


def save(database: kaputil.classes.Connection, record: kaputil.classes.CProprieta) -> bool:
    if kaputil.DB_Update(database, QUERY, record.Leggi()):
        return True
    print("  refused:", *kaputil.Errore.MsgToArray())
    return False


def edit(path: pathlib.Path) -> bool:
    anna, bruno = open_database(path), open_database(path)
    create_customers(anna)

    # Two users read the same record.
    hers, his = read(anna), read(bruno)
    print("read:", hers.Leggi("Nome"), hers.Leggi("Fido"))

    hers.Scrivi("Nome", "Ferramenta Rossi & Figli")
    print("Anna saves")
    saved = save(anna, hers)

    # His record is the one from before.
    his.Scrivi("Fido", 2000)
    print("Bruno saves")
    refused = not save(bruno, his)

    # He reads it again, makes his change, and saves both.
    his = read(bruno)
    his.Scrivi("Fido", 2000)
    print("Bruno saves again")
    saved = save(bruno, his) and saved

    last = read(anna)
    print("read:", last.Leggi("Nome"), last.Leggi("Fido"))
    return saved and refused


if __name__ == "__main__":
    with tempfile.TemporaryDirectory() as folder:
        sys.exit(0 if edit(pathlib.Path(folder) / "azienda.db") else 1)
