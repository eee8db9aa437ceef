# Legge i clienti di un database e li mostra.  Reads the customers of a database and shows them.
$connection = New-Object -ComObject KapLocal.Connection
$connection.Open('Provider=KapLocal;Data Source=:memory:')
[void]$connection.Execute('CREATE TABLE Clienti (Codice int PRIMARY KEY, Nome varchar(40))')
[void]$connection.Execute("INSERT INTO Clienti VALUES (12, 'Ferramenta Rossi')")
$rows = $connection.Execute('SELECT * FROM Clienti')
while (-not $rows.EOF) {
    '{0}  {1}' -f $rows.Fields.Item('Codice').Value, $rows.Fields.Item('Nome').Value
    $rows.MoveNext()
}
$functions = New-Object -ComObject KapUtil.StdFunctions
$functions.KapRound(2.675, 2)
