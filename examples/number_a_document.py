"""Takes document numbers from a counter that two programs share; one number is reserved, one already in use."""

import pathlib
import sys
import tempfile

import kaputil

TABLES = """
CREATE TABLE vtx_TabDoc (Codice varchar(3) PRIMARY KEY, TipoProg varchar(5))
CREATE TABLE vtx_TabPro (Codice varchar(5), Anno smallint, n_Def int, n_Prov int, GestProvv int,
                         PRIMARY KEY (Codice, Anno))
CREATE TABLE vtx_TabProPrenotati (Codice varchar(5), Anno smallint, Numero int, Stato varchar(1),
                                  PRIMARY KEY (Codice, Anno, Numero))
CREATE TABLE mag_TDocumenti (Anno smallint, Tipo varchar(3), Numero int, MC_Registrazione varchar(10))
CREATE TABLE mag_TFatture (Anno smallint, Tipo varchar(3), Numero int, NumFat int)
CREATE TABLE con_TabCausali (Codice varchar(5), Registro varchar(5))
CREATE TABLE con_MovConT (Protocollo int, Causale varchar(5), Data datetime)
CREATE TABLE con_MovConD (Protocollo int, Anno smallint, Registro varchar(5))
INSERT INTO vtx_TabDoc VALUES ('FAI', 'FAT')
INSERT INTO vtx_TabPro VALUES ('FAT', 2025, 41, 0, 0)
INSERT INTO mag_TDocumenti VALUES (2025, 'FAI', 42, NULL)
INSERT INTO vtx_TabProPrenotati VALUES ('FAT', 2025, 44, '')
"""

LOOK, TAKE = "L", "S"


def open_database(path: pathlib.Path) -> kaputil.classes.Connection:
    database = kaputil.Dispatch("ADODB.Connection")
    database.Open(f"Provider=KapLocal;Data Source={path}")
    return database


def invoice_number(database: kaputil.classes.Connection, mode: str, held: int = 0) -> int:
    """The next number of an invoice of 2025, passing over those in use; `held` is one that was reserved."""
    return int(kaputil.Progressivi("FAI", "D", mode, 2025, held, database, GestionePrenotati=1))


def number(path: pathlib.Path) -> bool:
    anna, bruno = open_database(path), open_database(path)
    anna.Execute(TABLES)

    # Both see the same number, and each gets one of their own.
    seen = [invoice_number(anna, LOOK), invoice_number(bruno, LOOK)]
    print("seen: ", *seen)
    taken = [invoice_number(anna, TAKE), invoice_number(bruno, TAKE)]
    print("taken:", *taken)

    # The reserved number is used for the invoice it was kept for.
    invoice_number(anna, TAKE, held=44)
    print("left: ", kaputil.RicercaNumeriDocPre(anna, "FAT", "2025", 40, 50, "X"))
    return seen == [43, 43] and taken == [43, 45]


if __name__ == "__main__":
    with tempfile.TemporaryDirectory() as folder:
        sys.exit(0 if number(pathlib.Path(folder) / "azienda.db") else 1)
