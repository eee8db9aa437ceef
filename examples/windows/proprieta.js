// Valori con un nome, in un solo testo.  Named values, in one text.
var bag = new ActiveXObject("KapUtil.CProprieta");
bag.Scrivi("Codice", 12);
bag.Scrivi("Nome", "Ferramenta Rossi");
WScript.Echo(bag.Leggi());
WScript.Echo("il nome: " + bag.Leggi("NOME"));
WScript.Echo("quanti: " + bag.Count());
var copy = new ActiveXObject("KapUtil.CProprieta");
copy.Scrivi("", bag.Leggi());
copy.Scrivi("Nome", "Ferramenta Rossi & Figli");
WScript.Echo(copy.Leggi("nome") + ", " + bag.Leggi("nome"));
