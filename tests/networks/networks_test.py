"""Access units over bad networks: what is delivered is whole, and what can get through does.

With NETWORKS=all in the environment the whole table is played, otherwise a sample of it. A row of the table for each
link goes to standard output.
"""

import concurrent.futures
import os
import pathlib
import subprocess
import tempfile
import unittest

import networks
from networks import AT_ONCE, IN_TURN, RECORDED, Condition

ALL = os.environ.get("NETWORKS") == "all"

# As the library has it, or as little as the short run can do with.
LENGTH = {"seconds": 20, "buffer": 3} if ALL else {"seconds": 5, "buffer": 1}

# Shares and bits in a second, as the link's options have them.
LOSSES = [0.01, 0.05, 0.1, 0.2] if ALL else [0.05]
RATES = [1e5, 1e6, 1e7, 1e8] if ALL else [1e5, 1e8]

# Of a limited link the media take so much: the rest is for what TCP and the reports need.
USE = 0.8
# Streams of more than so many kbit/s are played alone: they need the machine.
FAST = 10000

# Seconds that a busy machine may hold us up.
HICCUP = 0.5


def per_cent(share):
    return f"{100 * share:g} %"


def rate_in_words(rate):
    return f"{rate / 1e6:g} Mbit/s" if rate >= 1e6 else f"{rate / 1e3:g} kbit/s"


def over_both(name, link, **values):
    return [Condition(name, link, transport, **values) for transport in ("UDP", "TCP")]


def taken_in_all_ways(name, link):
    return [Condition(name, link, taken=taken, **LENGTH) for taken in (IN_TURN, AT_ONCE, RECORDED)]


def play_all(conditions):
    """Side by side, as far as the machine has the time for it."""
    calm = [condition for condition in conditions if condition.kbit_per_s <= FAST]
    with concurrent.futures.ThreadPoolExecutor(8) as pool:
        outcomes = list(pool.map(networks.play, calm))
    outcomes += [networks.play(condition) for condition in conditions if condition.kbit_per_s > FAST]
    for outcome in outcomes:
        print(outcome.row(), flush=True)
    return outcomes


class NetworksTest(unittest.TestCase):
    def check_all(self, conditions, check):
        for outcome in play_all(conditions):
            with self.subTest(outcome.row()):
                # These hold on every link.
                self.assertEqual(0, outcome.corrupt)
                self.assertEqual(0, outcome.mistimed)
                self.assertEqual(sorted(outcome.order), outcome.order)
                unharmed = set(range(outcome.stream.count)) - outcome.harmed
                self.assertLessEqual(len(unharmed - outcome.complete), outcome.overrun)
                check(outcome)

    def assert_in_time(self, outcome):
        # Time is what TCP pays with for everything else.
        if outcome.condition.transport == "UDP":
            self.assertLess(outcome.latest, HICCUP)

    def test_delay_and_jitter(self):
        conditions = over_both("nothing wrong", {}, **LENGTH)
        conditions += over_both("delay 100 ms, jitter 200 ms", {"delay": 0.1, "jitter": 0.2}, **LENGTH)
        if ALL:
            conditions += over_both("delay 100 ms", {"delay": 0.1}, **LENGTH)
            conditions += over_both("delay 500 ms, jitter 1 s", {"delay": 0.5, "jitter": 1}, **LENGTH)
        self.check_all(conditions, self.assert_in_time)

    def test_loss(self):
        def check(outcome):
            # The link did what it was told: five standard deviations.
            loss = outcome.condition.link["loss"]
            spread = 5 * (loss * (1 - loss) * outcome.packets) ** 0.5
            self.assertAlmostEqual(loss * outcome.packets, outcome.fates["lost"], delta=spread)
            # What was lost is missing.
            self.assertFalse(outcome.complete & outcome.touched["lost"])
            self.assert_in_time(outcome)

        self.check_all([Condition(f"loss {per_cent(loss)}", {"loss": loss, "delay": 0.02}, media=media, **LENGTH)
                        for media in networks.units.FORMATS for loss in LOSSES], check)

    def test_loss_over_tcp(self):
        # Little gets through a link that loses much: TCP takes it for a jam.
        values = {"kbit_per_s": 200, **LENGTH}
        self.check_all([Condition(f"loss {per_cent(loss)}", {"loss": loss, "delay": 0.02}, "TCP", **values)
                        for loss in LOSSES], self.assert_in_time)

    def test_reordering_and_duplicates(self):
        links = {"5 % held back 30 ms": {"reorder": 0.05, "delay": 0.02},
                 "5 % twice": {"duplicate": 0.05, "delay": 0.02}}
        if ALL:
            links["20 % held back 30 ms"] = {"reorder": 0.2, "delay": 0.02}
            links["20 % held back 300 ms"] = {"reorder": 0.2, "hold": 0.3, "delay": 0.02}
            links["20 % twice"] = {"duplicate": 0.2, "delay": 0.02}
        conditions = []
        for name, link in links.items():
            conditions += taken_in_all_ways(name, link) + [Condition(name, link, "TCP", **LENGTH)]
        self.check_all(conditions, self.assert_in_time)

    def test_everything_at_once(self):
        link = {"loss": 0.02, "reorder": 0.05, "duplicate": 0.05, "delay": 0.05, "jitter": 0.05, "rate": 2e6}
        conditions = taken_in_all_ways("2 Mbit/s, loss 2 %, jitter 50 ms, 5 % held back, 5 % twice", link)
        if ALL:
            conditions += taken_in_all_ways("2 Mbit/s, loss 10 %, jitter 50 ms, 20 % held back, 20 % twice",
                                            {**link, "loss": 0.1, "reorder": 0.2, "duplicate": 0.2})
        self.check_all(conditions, self.assert_in_time)

    def test_rates(self):
        conditions = []
        for rate in RATES:
            # Room for half a second: a sender that wakes up late has much to say.
            link = {"rate": rate, "queue": rate / 16}
            conditions += over_both(rate_in_words(rate), link, kbit_per_s=int(USE * rate / 1000),
                                    seconds=LENGTH["seconds"] / 2, buffer=LENGTH["buffer"])
        self.check_all(conditions, self.assert_in_time)

    def test_more_than_the_link_takes(self):
        def check(outcome):
            if outcome.condition.transport == "TCP":
                self.assertGreater(outcome.late, 0)
            else:
                self.assertTrue(outcome.touched["lost"])

        self.check_all(over_both("100 kbit/s", {"rate": 1e5, "queue": 10000}, kbit_per_s=150, **LENGTH), check)

    def test_down_for_five_seconds(self):
        def check(outcome):
            # It went on.
            self.assertIn(outcome.stream.count - 1, outcome.complete)
            if outcome.condition.transport == "UDP":
                self.assertGreater(len(outcome.lost), 4.5 * networks.units.UNITS_PER_SECOND)

        down = 6 if ALL else 3
        link = {"delay": 0.02, "down_from": down, "down_to": down + 5}
        self.check_all(over_both("down 5 s", link, **{**LENGTH, "seconds": down + 8}), check)

    def record_until_silence(self, transport):
        """The status and the complaint of the program when nothing comes any more."""
        condition = Condition("down for good", {"down_from": 3, "down_to": 1e6}, transport, RECORDED, buffer=1)
        patience = ["--config", "RTSP:TimeOutRTPAfter=2", "--config", "RTSP:TimeOutAfter=2"]
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            with networks.served(condition, folder / "log") as (url, at_client):
                command, _ = networks.client(condition, url, folder)
                result = subprocess.run([*at_client, *command, *patience], capture_output=True, text=True,
                                        timeout=networks.PATIENCE)
        return result.returncode, result.stderr

    def test_down_for_good_is_told(self):
        with concurrent.futures.ThreadPoolExecutor(2) as pool:
            for told in pool.map(self.record_until_silence, ("UDP", "TCP")):
                self.assertEqual((4, "virertsp: Media of track 0 stopped coming.\n"), told)


if __name__ == "__main__":
    print(networks.Outcome.HEADING)
    unittest.main()
