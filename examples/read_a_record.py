"""Reads a record of a database in memory, and one of its fields."""

import kaputil

cn = kaputil.Dispatch("ADODB.Connection")
cn.Open("Provider=KapLocal;Data Source=:memory:")
cn.Execute("CREATE TABLE Clienti (Codice int PRIMARY KEY, Nome varchar(40))")
cn.Execute("INSERT INTO Clienti VALUES (12, 'Ferramenta Rossi')")
record = kaputil.Ref("")
kaputil.DB_Read(cn, "SELECT * FROM Clienti", record)
fields = kaputil.Dispatch("KapUtil.CProprieta")
fields.Scrivi("", record.value)
print(fields.Leggi("Nome"))  # Ferramenta Rossi
