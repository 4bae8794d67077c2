"""The raw command line: how it is split and what reaches the product."""

import pytest

from conftest import INTEGRATED, UPDATED_ALL, box, shown
import installation

ZB = installation.ZB
# Makes a command line of about 32,000 characters.
LONG = "x" * 31900
PROGRAM = "S:\\Lumo\\mv\\bilancio\\bilancio.exe"


def command_line(station):
    return station.started("bilancio.exe")[0].removeprefix("Linea di comando: ")


@pytest.mark.parametrize("line, arguments", [
    pytest.param(f'{INTEGRATED} MVBIL /ditta "12 A" ultimo', "/ditta 12 A ultimo",
                 id="further_arguments_follow_the_program"),
    pytest.param("integratedRun\tS:\\Lumo \t S:\\Lumo MVBIL", "",
                 id="the_mode_is_taken_in_any_case_and_tabs_separate"),
    pytest.param(f'{INTEGRATED} MVBIL "tutto il resto', "tutto il resto",
                 id="a_lone_quote_takes_all_that_follows"),
    pytest.param(f'{INTEGRATED} MVBIL ab"cd', "ab cd", id="a_quote_inside_a_word_splits_it"),
    pytest.param('INTEGRATEDRUN "" S:\\Lumo S:\\Lumo MVBIL', "", id="empty_quotes_give_no_argument"),
    pytest.param(f"{INTEGRATED} MVBIL {LONG}", LONG,
                 id="a_long_command_line_is_taken_whole")])
def test_what_reaches_the_program_and_the_log(installed, line, arguments):
    assert shown(installed.run(line)) == []
    assert command_line(installed) == f"{PROGRAM} {arguments}"
    assert f"Gestione ProdTrelv - Esecuzione di: {PROGRAM} {arguments}" in installed.texts()


def test_at_most_twenty_arguments_count(installed):
    words = [f"a{number}" for number in range(5, 24)]
    installed.run(f"{INTEGRATED} MVBIL {' '.join(words)}")
    assert command_line(installed) == f"{PROGRAM} {' '.join(words[:16])}"
    assert any(text.endswith("\t Numero parametri = 20") for text in installed.texts())


def test_accents_in_arguments_reach_the_product_and_the_log(installed):
    installed.run(f"{INTEGRATED} MVBIL Società perché €")
    assert command_line(installed) == f"{PROGRAM} Società perché €"
    assert b"bilancio.exe Societ\xe0 perch\xe9 \x80\r\n" in installed.log.read_bytes()


def test_a_host_folder_with_blanks_stands_in_quotes(with_bilancio):
    workstation = with_bilancio
    workstation.rename_host("Programmi Lumo")
    folder = '"S:\\Programmi Lumo"'
    assert shown(workstation.run(f"INTEGRATEDRUN {folder} {folder} MVBIL a")) == []
    assert workstation.commands_run()[0] == (
        '"S:\\Programmi Lumo\\prg\\com\\setup\\aggdovra\\bilancio\\setup.exe" ZB 09.93.00.00 Server '
        '"S:\\Programmi Lumo\\mv\\bilancio" bilancio.exe consolidato.exe icad.exe personalizza.exe')
    assert (workstation.server / "mv/bilancio/bilancio.exe").exists()
    texts = workstation.texts()
    assert "Gestione ProdTrelv - scrittura integrazione su macchina: S:\\Programmi Lumo" in texts
    # The command to start a program stands without quotes: it starts because nothing is called
    # "S:\Programmi.exe".
    assert ("Gestione ProdTrelv - Esecuzione di: S:\\Programmi Lumo\\mv\\bilancio\\bilancio.exe a"
            in texts)


BILANCIO = ["MVBil_BIL-COOSOC=Yes", "MVBil_BIL-ENTFIN=Yes", "MVBil_BIL-IASCON=Yes",
            "MVBil_BIL-IASIFR=Yes", "MVBil_Bilancio=Yes", "MVBil_Consolidato=Yes",
            "MVBil_HostedByLumo=Yes", "MVBil_ICAD=Yes"]


@pytest.mark.parametrize("code, file, variables", [
    ("Q2", "tarsena2.exe", ["MVQ2_Analisi=Yes", "MVQ2_HostedByLumo=Yes", "MVQ2_Rating=Yes",
                            "MVQ2_Valutazione=Yes"]),
    ("LUDA", "LUDA2003.exe", ["LUDAComRap=1", "LUDAIndFin=1", "LUDAIntermed=1", "LUDAProf=1"]),
    ("NERIO", "nerio.exe", []),
    ("VIRADO", "virado.exe", []),
    ("ZM", "zeltomodelli.exe", []),
    ("MVPERS", "personalizza.exe", BILANCIO),
    ("MVBIL", "bilancio.exe", BILANCIO),
])
def test_each_program_gets_the_variables_of_its_product(installed, code, file, variables):
    installed.start(code)
    assert installed.started(file)[2:] == variables


def test_undefined_is_a_code_without_program(installed):
    assert shown(installed.run(f"{INTEGRATED} UNDEFINED")) == [box(
        "Il prodotto selezionato  non risulta installato\r\n\r\nPremere Ok per interrompere")]
    assert UPDATED_ALL in installed.texts()
