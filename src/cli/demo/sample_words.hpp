#pragma once

#include <array>
#include <string_view>

// What the sample company's names and addresses are put together from.
namespace kap::cli {

struct Town {
    std::string_view name;
    std::string_view province;
    std::string_view postalCode;
    int taxOffice;  // the digits of a VAT number that tell the province
};

inline constexpr auto kTowns = std::to_array<Town>({
    {"Torino", "TO", "10121", 1},
    {"Alessandria", "AL", "15121", 2},
    {"Genova", "GE", "16121", 10},
    {"La Spezia", "SP", "19121", 11},
    {"Varese", "VA", "21100", 12},
    {"Como", "CO", "22100", 13},
    {"Milano", "MI", "20121", 15},
    {"Bergamo", "BG", "24121", 16},
    {"Brescia", "BS", "25121", 17},
    {"Pavia", "PV", "27100", 18},
    {"Cremona", "CR", "26100", 19},
    {"Mantova", "MN", "46100", 20},
    {"Trento", "TN", "38121", 22},
    {"Verona", "VR", "37121", 23},
    {"Vicenza", "VI", "36100", 24},
    {"Belluno", "BL", "32100", 25},
    {"Treviso", "TV", "31100", 26},
    {"Venezia", "VE", "30121", 27},
    {"Padova", "PD", "35121", 28},
    {"Udine", "UD", "33100", 30},
    {"Piacenza", "PC", "29121", 33},
    {"Parma", "PR", "43121", 34},
    {"Reggio nell'Emilia", "RE", "42121", 35},
    {"Modena", "MO", "41121", 36},
    {"Bologna", "BO", "40121", 37},
    {"Ferrara", "FE", "44121", 38},
    {"Ravenna", "RA", "48121", 39},
    {"Forlì", "FC", "47121", 40},
    {"Pesaro", "PU", "61121", 41},
    {"Ancona", "AN", "60121", 42},
    {"Firenze", "FI", "50121", 48},
    {"Perugia", "PG", "06121", 54},
    {"Roma", "RM", "00185", 58},
    {"Napoli", "NA", "80133", 63},
    {"L'Aquila", "AQ", "67100", 66},
    {"Bari", "BA", "70121", 72},
    {"Reggio di Calabria", "RC", "89121", 80},
    {"Palermo", "PA", "90133", 82},
    {"Catania", "CT", "95121", 87},
    {"Cagliari", "CA", "09124", 92},
});

inline constexpr auto kStreets = std::to_array<std::string_view>({
    "Via Roma",
    "Via Garibaldi",
    "Via Mazzini",
    "Via Dante Alighieri",
    "Corso Italia",
    "Via Cavour",
    "Via Giacomo Matteotti",
    "Via Vittorio Veneto",
    "Viale della Libertà",
    "Via Guglielmo Marconi",
    "Via Giuseppe Verdi",
    "Via Alessandro Volta",
    "Via dell'Artigianato",
    "Via dell'Industria",
    "Via delle Officine",
    "Piazza del Mercato",
    "Via San Martino",
    "Via XXV Aprile",
    "Via IV Novembre",
    "Strada Provinciale",
    "Via Leonardo da Vinci",
    "Viale dei Tigli",
    "Via del Lavoro",
    "Via Galileo Galilei",
});

inline constexpr auto kFirstNames = std::to_array<std::string_view>({
    "Alessandro", "Anna",    "Andrea",   "Bruno",     "Carla",   "Chiara",  "Davide",
    "Elena",      "Enrico",  "Federica", "Francesco", "Giorgia", "Giulia",  "Giuseppe",
    "Laura",      "Lorenzo", "Luca",     "Marco",     "Maria",   "Matteo",  "Nicolò",
    "Paola",      "Pietro",  "Roberto",  "Sara",      "Silvia",  "Stefano", "Valentina",
});

inline constexpr auto kSurnames = std::to_array<std::string_view>({
    "Barbieri", "Bellini", "Bernardi",  "Bianchi",    "Brambilla", "Bruno",   "Caruso",
    "Colombo",  "Conti",   "Costa",     "D'Amico",    "D'Angelo",  "De Luca", "De Santis",
    "Esposito", "Fabbri",  "Ferrari",   "Ferraro",    "Fontana",   "Galli",   "Gallo",
    "Gatti",    "Gentile", "Giordano",  "Greco",      "Grassi",    "Leone",   "Lombardi",
    "Longo",    "Mancini", "Marchetti", "Mariani",    "Marini",    "Marino",  "Martinelli",
    "Monti",    "Moretti", "Morelli",   "Pellegrini", "Ricci",     "Rinaldi", "Riva",
    "Rizzo",    "Romano",  "Rossetti",  "Rossi",      "Russo",     "Sala",    "Santoro",
    "Serra",    "Testa",   "Valentini", "Villa",      "Vitale",
});

// "*" stands for a surname.
inline constexpr auto kCompanyNames = std::to_array<std::string_view>({
    "Ferramenta * S.r.l.",
    "Officina Meccanica *",
    "* & Figli S.n.c.",
    "Carpenteria * S.r.l.",
    "* Impianti S.r.l.",
    "Edil* S.p.A.",
    "Termoidraulica *",
    "* & * S.n.c.",
    "Fratelli * S.r.l.",
    "Falegnameria *",
    "Autofficina * S.a.s.",
    "* Costruzioni S.p.A.",
    "Agricola * S.s.",
    "Utensileria * S.r.l.",
});

struct ProductLine {
    std::string_view name;
    std::string_view code;
    std::string_view unit;
    int price;  // of the smallest size, in ten-thousandths of a euro
};

inline constexpr auto kProductLines = std::to_array<ProductLine>({
    {"Vite TE zincata", "VTE", "PZ", 640},
    {"Vite autofilettante", "VAF", "PZ", 310},
    {"Dado esagonale", "DAD", "PZ", 190},
    {"Rondella piana", "RON", "PZ", 95},
    {"Bullone ad alta resistenza", "BUL", "PZ", 4150},
    {"Tassello in nylon", "TAS", "PZ", 880},
    {"Barra filettata", "BAR", "MT", 17900},
    {"Cuscinetto a sfere", "CUS", "PZ", 46500},
    {"Guarnizione O-ring", "ORG", "PZ", 1250},
    {"Punta per metallo HSS", "PUN", "PZ", 21400},
    {"Disco da taglio", "DIS", "PZ", 13800},
    {"Tubo in rame", "TUB", "MT", 69500},
    {"Raccordo a pressare", "RAC", "PZ", 32700},
    {"Valvola a sfera", "VAL", "PZ", 78400},
    {"Lucchetto in ottone", "LUC", "PZ", 65000},
    {"Cerniera in acciaio inox", "CER", "PZ", 28600},
    {"Chiave combinata", "CHC", "PZ", 54200},
    {"Cacciavite isolato", "CAC", "PZ", 48900},
});

// The sizes of a product line; a size costs its factor times the smallest one.
struct ProductSize {
    std::string_view name;
    std::string_view code;
    int percent;
};

inline constexpr auto kProductSizes = std::to_array<ProductSize>({
    {"mis. 4", "04", 100},
    {"mis. 5", "05", 112},
    {"mis. 6", "06", 131},
    {"mis. 8", "08", 168},
    {"mis. 10", "10", 214},
    {"mis. 12", "12", 265},
    {"mis. 16", "16", 380},
    {"mis. 20", "20", 545},
});

inline constexpr auto kNotes = std::to_array<std::string_view>({
    "Consegnare al piano",
    "Telefonare prima della consegna",
    "Citare il nostro ordine",
    "Consegna entro le 12",
    "Porto franco",
    "Materiale in conto visione",
    "Saldo a 60 giorni",
    "Imballo a rendere",
    "Ritira il cliente",
    "Chiedere dell'ufficio acquisti",
});

}  // namespace kap::cli
