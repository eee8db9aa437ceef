"""Tells whether every invoice number of a year can be accounted for: one is missing, one was given out twice."""

import pathlib
import sys
import tempfile

import kaputil

TABLES = """
CREATE TABLE vtx_TabDoc (Codice varchar(3) PRIMARY KEY, TipoProg varchar(5))
CREATE TABLE vtx_TabPro (Codice varchar(5), Anno smallint, n_Def int, n_Prov int, GestProvv int,
                         PRIMARY KEY (Codice, Anno))
CREATE TABLE mag_TDocumenti (Anno smallint, Tipo varchar(3), Numero int, Data datetime, MC_Registrazione varchar(10))
CREATE TABLE con_MovConD (Protocollo int, Anno smallint, Registro varchar(5))
INSERT INTO vtx_TabDoc VALUES ('FAI', 'FAT'), ('NCR', 'FAT')
INSERT INTO vtx_TabPro VALUES ('FAT', 2025, 5, 0, 0)
INSERT INTO mag_TDocumenti VALUES (2025, 'FAI', 1, '20250108', NULL), (2025, 'FAI', 3, '20250110', NULL),
                                  (2025, 'NCR', 3, '20250110', NULL), (2025, 'FAI', 4, '20250115', NULL)
INSERT INTO con_MovConD VALUES (5, 2025, 'FAT')
"""


def account(path: pathlib.Path) -> bool:
    database = kaputil.Dispatch("ADODB.Connection")
    database.Open(f"Provider=KapLocal;Data Source={path}")
    database.Execute(TABLES)

    for row in kaputil.numbers.register(database, "FAT", 2025):
        print(row.first, row.state, *(f"{one.kind} {one.type}".strip() for one in row.carriers), sep="\t")
    (register,) = kaputil.numbers.registers(database, "FAT", 2025)
    found = [(one.kind, one.first) for one in register.anomalies]
    print(*found)
    return found == [("missing", 2), ("doubled", 3), ("entryWithoutDocument", 5)]


if __name__ == "__main__":
    with tempfile.TemporaryDirectory() as folder:
        sys.exit(0 if account(pathlib.Path(folder) / "azienda.db") else 1)
