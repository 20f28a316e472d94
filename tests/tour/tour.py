"""The tour: every command of the Halvane menu, taken as a user takes it.

    tour.py SAMPLE WORK SHOTS [LEG]...

Runs against a halvane-desktop already on the display (scripts/desktop-tour.sh
starts it). SAMPLE is a projected bathymetry grid, WORK an empty folder for
the runs, SHOTS the folder for the pictures; LEGs (the functions below named
in LEGS) pick part of the tour. Fails naming the step it was at.
"""

import os
import sys
import xml.etree.ElementTree as ElementTree

from desktop import Desktop, TourFailure, descendants, text_of, wait

HERE = os.path.dirname(os.path.abspath(__file__))
DICTIONARY = os.path.join(HERE, "..", "..", "resources", "def_dict.xml")

sample, work, shots = sys.argv[1:4]
d = Desktop(shots)


def folder(name):
    path = os.path.join(work, name)
    os.makedirs(path, exist_ok=True)
    return path


def step(title):
    print("tour:", title, flush=True)


def layer_list():
    return [n.name for n in descendants(d.find(d.main, "tree"))]


def expect_layers(names):
    """The layer list shows these layers, top first, among the legends' lines."""
    listed = wait("the layers %s" % names,
                  lambda: (lambda now: now if all(n in now for n in names) else None)(layer_list()),
                  30)
    order = [listed.index(n) for n in names]
    if order != sorted(order):
        raise TourFailure("the layer list holds %s, not %s in that order" % (listed, names))
    return listed


def expect_zone_legend(layer):
    """Under the zone layer, one line per class, named as the dictionary names it."""
    zones = [z.text for z in ElementTree.parse(DICTIONARY).iter("Zone")]
    listed = expect_layers([layer])
    start = listed.index(layer) + 2  # the layer, then "All Data Values"
    if listed[start:start + len(zones)] != zones:
        raise TourFailure("the legend of %s reads %s, not %s"
                          % (layer, listed[start:start + len(zones)], zones))


def finish_with_map(page, button="Finish"):
    d.button(page, button)
    d.answer("Add Data to Map?", "Yes")


def browse_folder(page, prompt, path):
    d.click(d.beside(page, d.after(page, prompt)))
    d.choose_file("Select the working directory:", path)


def browse_grid(page, prompt, title, path):
    d.click(d.beside(page, d.after(page, prompt)))
    d.choose_raster(title, path)


def required_data(caption, work_folder, shot):
    """A command's first dialog: folder and grid through their browsers, then OK."""
    page = d.page(caption)
    browse_folder(page, "Please select working directory:", work_folder)
    browse_grid(page, "Please specify an input bathymet", "Input Bathymetric Data Set", sample)
    d.shot(shot, page)
    d.button(page, "OK")


def close(page, wizard=False):
    """Close; in the wizard the way out asks first."""
    d.button(page, "Close")
    if wizard:
        d.answer("Exit?", "Yes")
    d.no_page()


# The legs -----------------------------------------------------------------------

def wizard():
    step("Halvane Classification Wizard: the whole route on the sample, then rugosity")
    d.menu("Halvane Classification Wizard")
    page = d.page("Welcome to the Halvane Classification Wizard.")
    d.shot("frmIntro", page)
    d.button(page, "Next ->")

    page = d.page("Input Data")
    browse_folder(page, "First, select working directory:", folder("wizard"))
    browse_grid(page, "Run an entire zonal classification session.",
                "Input Bathymetric Data Set", sample)
    d.shot("frmZoneSetup_inputdata", page)
    d.button(page, "Next ->")

    page = d.page("Resampling")
    d.shot("frmZoneSetup_resampling", page)
    d.button(page, "Next ->")

    # Each stage into temporary grids ("No thanks."): Finish removes them.
    for heading, shot in (("Create Broad Scale Bathymetric Position Index (BPI) grid", "frmZoneStep1"),
                          ("Create Fine Scale Bathymetric Position Index (BPI) grid", "frmZoneStep2")):
        page = d.page(heading)
        d.click(d.find(page, "radio button", "No thanks."))
        d.button(page, "Generate Grid")
        d.shot(shot, page)
        d.button(page, "Next ->")

    page = d.page("Standardize the BPI grids")
    d.click(d.find(page, "radio button", "No thanks."))
    d.click(d.find(page, "push button", "Next ->"))  # the tab's own, before the page's
    d.click(d.find(page, "radio button", "No thanks."))
    d.button(page, "Submit")
    d.shot("frmZoneStep3", page)
    d.button(page, "Next ->")

    # The editor opens on the default dictionary, which goes on as it stands.
    page = d.page("Create / edit classification dictionary")
    d.shot("frmZoneStep4", page)
    d.button(page, "Next ->")

    page = d.page("Final Classification Schema")
    d.shot("frmZoneStep8", page)
    finish_with_map(page)
    page = d.page("Terrain Classification Process Complete")
    d.shot("frmZoneStep8_comp", page)
    expect_zone_legend("ZONES")

    # The rugosity page offers the grid the wizard started from, and its folder.
    d.button(page, "Create Rugosity Grids")
    page = d.page("Create Rugosity Grid")
    if text_of(d.after(page, "Please specify an input data set:")) != sample:
        raise TourFailure("the rugosity page does not offer the wizard's bathymetry")
    d.type_into(d.after(page, "Please specify an output data set name."), "RUGOSITY")
    d.shot("frmRugosity", page)
    finish_with_map(page)
    page = d.page("Rugosity Grid")
    d.shot("frmRugosity_comp", page)
    close(page, wizard=True)
    expect_layers(["RUGOSITY", "ZONES"])
    d.shot("map-wizard", d.main)


def resample():
    step("Resample: the sample at 20 m")
    d.menu("Resample")
    required_data("Resample - Required Data", folder("resample"),
                  "frmZoneSetup_resampling_reqdata")
    page = d.page("Resampling")
    d.click(d.find(page, "radio button", "Yes"))
    d.type_into(d.after(page, "Output cell size:"), "20")
    d.type_into(d.after(page, "Please specify an output dataset:"), "depth20")
    d.shot("frmZoneSetup_resampling-alone", page)
    finish_with_map(page, "Submit")
    close(page)
    expect_layers(["depth20"])


def bpi(entry, caption, heading, form, name):
    step("%s: the sample into %s" % (entry, name))
    d.menu(entry)
    required_data(caption, folder("bpi"), form + "_reqdata")
    page = d.page(heading)
    d.click(d.find(page, "radio button", "Yes.", prefix=True))
    d.type_into(d.after(page, "Yes."), name)
    d.shot(form + "-alone", page)
    finish_with_map(page, "Generate Grid")
    close(page)
    expect_layers([name])


def broad():
    bpi("Build Broad Scale BPI", "Broad Scale - Required Data",
        "Create Broad Scale Bathymetric Position Index (BPI) grid", "frmZoneStep1", "broad")


def fine():
    bpi("Build Fine Scale BPI", "Fine Scale - Required Data",
        "Create Fine Scale Bathymetric Position Index (BPI) grid", "frmZoneStep2", "fine")


def standardize():
    step("Standardize BPI Grids: both indices into saved grids")
    d.menu("Standardize BPI Grids")
    page = d.page("Standardize BPI - Required")
    bpis = folder("bpi")
    browse_folder(page, "Please select working directory:", bpis)
    browse_grid(page, "Fine Scale:", None, os.path.join(bpis, "fine.tif"))
    browse_grid(page, "Broad Scale:", None, os.path.join(bpis, "broad.tif"))
    d.shot("frmZoneStep3_reqdata", page)
    d.button(page, "OK")

    page = d.page("Standardize the BPI grids")
    for name in ("finestd", "broadstd"):
        d.click(d.find(page, "radio button", "Yes.", prefix=True))
        d.type_into(d.after(page, "Yes."), name)
        if name == "finestd":
            d.click(d.find(page, "push button", "Next ->"))  # the tab's own
    d.shot("frmZoneStep3-alone", page)
    finish_with_map(page, "Submit")
    close(page)
    expect_layers(["broadstd", "finestd"])


def dictionary():
    step("Classification Dictionary Editor: the default dictionary, alone")
    d.menu("Classification Dictionary Editor")
    page = d.page("Create / edit classification dictionary")
    d.shot("frmZoneStep4-alone", page)
    close(page)


def classify():
    step("Terrain Classification Builder: the short route, from the saved standardized grids")
    d.menu("Terrain Classification Builder")
    page = d.page("Final Classification Schema")
    bpis = folder("bpi")
    browse_folder(page, "First, select working directory:", folder("classify"))
    browse_grid(page, "Bathymetric data set:", None, sample)
    browse_grid(page, "Fine scale standardized BPI:", None, os.path.join(bpis, "finestd.tif"))
    browse_grid(page, "Broad scale standardized BPI:", None, os.path.join(bpis, "broadstd.tif"))
    d.click(d.beside(page, d.after(page, "Classification Dictionary:")))
    d.choose_file(None, os.path.abspath(DICTIONARY))
    d.type_into(d.after(page, "Please specify an output data set name:"), "SHORTZONES")
    d.shot("frmZoneStep8_reqdata", page)
    d.button(page, "Next")
    page = d.page("Input Data")
    finish_with_map(page)
    page = d.page("Terrain Classification Process Complete")
    expect_zone_legend("SHORTZONES")
    d.button(page, "Exit")
    d.no_page()
    d.shot("map-short-route", d.main)


def rugosity():
    step("Rugosity Builder: the sample's rugosity, alone")
    d.menu("Rugosity Builder")
    page = d.page("Create Rugosity Grid")
    browse_grid(page, "Please specify an input data set:", "Input Bathymetric Data Set", sample)
    browse_folder(page, "Please specify a working directory:", folder("rugosity"))
    d.type_into(d.after(page, "Please specify an output data set name."), "rugged")
    d.shot("frmRugosity-alone", page)
    finish_with_map(page)
    close(d.page("Rugosity Grid"))
    expect_layers(["rugged"])


def help():
    step("Help: the help window, over the map")
    d.menu("Help")
    d.shot("help", d.dialog("Halvane Help"))


def leave():
    step("File > Exit")
    d.click(d.find(d.main, "menu item", "File"))
    d.press("Up", "Return")  # the last entry


LEGS = [wizard, resample, broad, fine, standardize, dictionary, classify, rugosity]


try:
    for leg in LEGS:
        if len(sys.argv) <= 4 or leg.__name__ in sys.argv[4:]:
            leg()
    d.shot("map", d.main)
    help()
    leave()
except TourFailure:
    # What was on the screen, for whoever reads the log of a failed run.
    for window in d.tops():
        print("tour: on screen: %s '%s': %s" % (
            window.getRoleName(), window.name,
            [n.name for n in descendants(window) if n.name][:12]), file=sys.stderr)
    d.shot("failure", d.main)
    raise
print("tour: %d pictures in %s" % (len(d.taken), shots))
