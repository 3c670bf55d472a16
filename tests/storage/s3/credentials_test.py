"""Where credentials come from, in which order, how they are renewed, and how kglob reports that there are none."""

import concurrent.futures
import functools
import hashlib
import json
import os
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

from credential_services import CredentialServices

KGLOB = ""


class Credentials(unittest.TestCase):
    def setUp(self):
        self.services = self.enterContext(CredentialServices())
        self.home = Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.cache = self.home / ".aws" / "sso" / "cache"
        self.cache.mkdir(parents=True)
        web, login, container = self.services.hidden
        (self.home / "web").write_text(web + "\n")
        (self.home / "container").write_text(container)
        (self.home / "broken").write_text("a\nb")
        for name in ("session", "http://start"):
            self.log_in(name, login, "2999-01-01T00:00:00Z")
        self.log_in("old", login, "2020-01-01T00:00:00UTC")
        self.renewable = self.log_in("renewable", "old-token", "2020-01-01T00:00:00Z", refreshToken=container, clientId="i", clientSecret="client-secret")
        base, file, config, both, key = (self.services.keys(each) for each in ("base", "file", "config", "both", "env"))
        access, secret = (line.split(" = ")[1] for line in key.splitlines())
        print_keys = f"{sys.executable} -c \"import urllib.request as u; print(u.urlopen('%s/process').read().decode())\""

        # source: (environment, the profile in the config file, and in the credentials file); by behaviour of the services.
        def sources(behaviour):
            url = f"{self.services.url}/{behaviour}"
            services = {"AWS_ENDPOINT_URL": url, "AWS_EC2_METADATA_SERVICE_ENDPOINT": url}
            sso = "sso_account_id = 1\nsso_role_name = r\n"
            return {
                "env": ({"AWS_ACCESS_KEY_ID": access, "AWS_SECRET_ACCESS_KEY": secret}, "", ""),
                "AssumeRole": (services, "role_arn = arn:r\nsource_profile = base\nexternal_id = x+y &\n", ""),
                "AssumeRoleWithWebIdentity": ({**services, "AWS_WEB_IDENTITY_TOKEN_FILE": f"{self.home}/web", "AWS_ROLE_ARN": "arn:r"}, "", ""),
                "sso": (services, f"sso_session = session\n{sso}", ""),
                "file": ({}, "", file),
                "process": ({}, "credential_process = " + print_keys % url + "\n", ""),
                "config": ({}, config, ""),
                "container": ({"AWS_CONTAINER_CREDENTIALS_FULL_URI": f"{url}/container", "AWS_CONTAINER_AUTHORIZATION_TOKEN_FILE": f"{self.home}/container"}, "", ""),
                "instance": (services, "", ""),
            }

        self.sources = sources
        self.others = f"[profile base]\n{base}[profile both]\nrole_arn = arn:r\nsource_profile = both\n{both}" \
            "[profile chain]\nrole_arn = arn:r\nsource_profile = both2\n[profile both2]\nrole_arn = arn:r\nsource_profile = base\n" \
            f"[profile a]\nrole_arn = r\nsource_profile = b\n[profile b]\nrole_arn = r\nsource_profile = a\n[profile empty]\nregion = x\n" \
            "".join(f"[sso-session {name}]\nsso_region = eu-1\n" for name in ("session", "old", "renewable"))

    def log_in(self, name, token, end, **others):
        file = self.cache / (hashlib.sha1(name.encode()).hexdigest() + ".json")
        file.write_text(json.dumps({"accessToken": token, "expiresAt": end, **others}))
        return file

    def start(self, *sources, arguments=("s3://b/*",), **options):
        environment = {name: value for name, value in os.environ.items() if not name.startswith("AWS_")}
        folder = Path(tempfile.mkdtemp(dir=self.home))
        config = credentials = "[default]\n"
        for variables, in_config, in_credentials in sources:
            environment.update(variables)
            config += in_config
            credentials += in_credentials
        (folder / "config").write_text(config + self.others)
        (folder / "credentials").write_text(credentials)
        environment.update(HOME=str(self.home), AWS_CONFIG_FILE=f"{folder}/config", AWS_SHARED_CREDENTIALS_FILE=f"{folder}/credentials",
                           AWS_ENDPOINT_URL_S3=f"{self.services.url}/store", http_proxy="http://127.0.0.1:1", no_proxy="127.0.0.1")
        return subprocess.Popen([KGLOB, *arguments], env=environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, **options)

    def search(self, *sources, **options):
        with self.start(*sources, **options) as run:
            found, errors = run.communicate(timeout=60)
        for hidden in self.services.hidden:
            self.assertNotIn(hidden, found + errors)
        return found, errors

    def assert_identity(self, expected, *sources, **options):
        found, errors = self.search(*sources, **options)
        self.assertRegex(found, rf"^s3://b/0-{expected}\d*\n$", errors)

    def test_the_first_source_counts(self):
        sources = list(self.sources("well").items())
        for i, (name, _) in enumerate(sources):
            with self.subTest(source=name):
                self.assert_identity(name, *(source for _, source in reversed(sources[i:])))
        self.assert_identity("nobody", sources[-1][1], ({"AWS_EC2_METADATA_DISABLED": "true"}, "", ""))

    def test_a_profile_names_its_source(self):
        well = self.sources("well")
        on, env = well["instance"], well["env"][0]
        container = {**on[0], **well["container"][0]}
        container["AWS_CONTAINER_AUTHORIZATION_TOKEN"] = self.services.hidden[2]
        del container["AWS_CONTAINER_AUTHORIZATION_TOKEN_FILE"]
        # the profile, the environment, who it is, and who has assumed the role
        for profile, variables, expected, base in (
                ("role_arn = arn:r\ncredential_source = Ec2InstanceMetadata\n", on[0], "AssumeRole", "instance1"),
                ("role_arn = arn:r\ncredential_source = EcsContainer\n", container, "AssumeRole", "container1"),
                (f"role_arn = arn:r\nweb_identity_token_file = {self.home}/web\n", on[0], "AssumeRoleWithWebIdentity", None),
                ("sso_start_url = http://start\nsso_region = eu-1\nsso_account_id = 1\nsso_role_name = r\n", on[0], "sso", None),
                ("", {**on[0], "AWS_PROFILE": "both"}, "AssumeRole", "both"),
                ("", {**on[0], "AWS_PROFILE": "chain"}, "AssumeRole", "base"),
                ("role_arn = arn:r\ncredential_source = Environment\n", {**on[0], **env}, "env", None)):
            with self.subTest(profile=profile, variables=variables):
                self.services.signers.clear()
                self.assert_identity(expected, (variables, profile, ""))
                self.assertIn(base or self.services.signers[0], self.services.signers)

    def test_options_go_before_the_environment(self):
        well = self.sources("well")
        environment = ({**well["env"][0], **well["AssumeRoleWithWebIdentity"][0]}, "", "")
        self.assert_identity("AssumeRole", environment, arguments=["--profile=both", "s3://b/*"])
        self.assert_identity("base", environment, arguments=["--profile=base", "s3://b/*"])
        self.assert_identity("nobody", environment, arguments=["--no-sign-request", "s3://b/*"])

    def test_each_is_renewed_during_a_search(self):
        def run(name):
            return self.search(self.sources("short")[name], arguments=["s3://long/*"])

        names = ["AssumeRole", "AssumeRoleWithWebIdentity", "sso", "process", "container", "instance"]
        with concurrent.futures.ThreadPoolExecutor(6) as pool:
            for name, (found, errors) in zip(names, pool.map(run, names)):
                with self.subTest(source=name):
                    users = {line.split("-", 1)[1] for line in found.splitlines()}
                    self.assertEqual((len(found.splitlines()), errors), (10, ""))
                    self.assertTrue(2 <= len(users) <= 6 and all(user.startswith(name) for user in users), users)
        self.assertEqual(self.services.expired, 0)

    def test_the_metadata_service_is_waited_for_a_second(self):
        begin = time.monotonic()
        self.assert_identity("nobody", self.sources("silent")["instance"])
        self.assertTrue(1 <= time.monotonic() - begin < 3)

    def test_failures_are_reported(self):
        web = self.sources("well")["AssumeRoleWithWebIdentity"][0]
        local = {"AWS_EC2_METADATA_DISABLED": "true"}
        uri = "AWS_CONTAINER_CREDENTIALS_FULL_URI"
        sso = "sso_account_id = 1\nsso_role_name = r\nsso_session = "
        refused = "HTTP 403 AccessDenied: not you, ***"
        garbage, refuse = self.sources("garbage"), self.sources("refuse")
        process = "the credential_process of the profile \"default\": "
        cases = (
            (refuse["AssumeRole"], "the role arn:r: " + refused),
            (refuse["AssumeRoleWithWebIdentity"], "the role arn:r by web identity: " + refused),
            (refuse["sso"], "the SSO login of the profile \"default\": HTTP 403"),
            (refuse["container"], "the container's credentials service: HTTP 403"),
            (self.sources("silent")["container"], "the container's credentials service: Operation timed out"),
            (self.sources("silent")["AssumeRole"], "(tried 2 times in 2"),
            (garbage["AssumeRole"], "isn't XML"),
            (garbage["sso"], "aren't a JSON object"),
            (garbage["container"], "aren't a JSON object"),
            (garbage["instance"], "contains a control character"),
            (({}, "credential_process = exit 7\n", ""), process + "the command ended with status 7"),
            (({}, "credential_process = kill -9 $$\n", ""), process + "the command was ended by signal 9"),
            (({}, "credential_process = cat /dev/zero\n", ""), process + "the command writes more than 64 KiB"),
            (({}, "credential_process = echo '{\"Version\": 2}'\n", ""), process + "\"Version\" isn't 1"),
            (({}, "role_arn = r\n", ""), "sets role_arn, but neither source_profile nor credential_source"),
            (({}, "role_arn = r\nsource_profile = base\ncredential_source = Environment\n", ""), "both source_profile"),
            (({}, "role_arn = r\nsource_profile = none\n", ""), "names \"none\", but neither"),
            (({}, "role_arn = r\nsource_profile = empty\n", ""), "names \"empty\", which has no credentials"),
            (({}, "role_arn = r\nsource_profile = default\n", ""), "leads back to the profile \"default\""),
            (({"AWS_PROFILE": "a"}, "", ""), "leads back to the profile \"a\""),
            (({}, "role_arn = r\ncredential_source = Moon\n", ""), "names \"Moon\": use Environment, EcsContainer or Ec2"),
            ((local, "role_arn = r\ncredential_source = Ec2InstanceMetadata\n", ""), "which gives no credentials here"),
            (({}, "role_arn = r\nsource_profile = base\nmfa_serial = m\n", ""), "sets mfa_serial"),
            (({}, "role_arn = r\nsource_profile = base\nduration_seconds = 1h\n", ""), "isn't a whole number"),
            (({}, "login_session = l\n", ""), "sets login_session, which isn't supported"),
            (({}, "web_identity_token_file = f\n", ""), "sets web_identity_token_file, but not role_arn"),
            (({**web, "AWS_ROLE_ARN": ""}, "", ""), "AWS_WEB_IDENTITY_TOKEN_FILE is set, but not AWS_ROLE_ARN"),
            (({**web, "AWS_WEB_IDENTITY_TOKEN_FILE": "/none"}, "", ""), "the token file /none doesn't exist"),
            (({}, "sso_session = session\nsso_account_id = 1\n", ""), "sets sso_session, but not sso_role_name"),
            (({}, f"{sso}other\n", ""), "names \"other\", but the config file has no such section"),
            (({}, f"{sso}old\n", ""), "the token of the login has expired: log in again"),
            ((refuse["sso"][0], f"{sso}renewable\n", ""), f"has expired, and can't be renewed: {refused}"),
            (({uri: "http://store.example/"}, "", ""), "neither loopback nor link-local"),
            (({uri: "http://127.0.0.1/", "AWS_CONTAINER_AUTHORIZATION_TOKEN_FILE": f"{self.home}/broken"}, "", ""), "contains a control character"),
            (({"AWS_ACCESS_KEY_ID": "a\r\nX: y", "AWS_SECRET_ACCESS_KEY": "b"}, "", ""), "the access key contains a control character"))
        # The identity of another source is at hand, but isn't used.
        instance = self.sources("well")["instance"]
        with concurrent.futures.ThreadPoolExecutor(8) as pool:
            for case, (found, errors) in zip(cases, pool.map(lambda case: self.search(instance, case[0]), cases)):
                with self.subTest(source=case[0]):
                    self.assertEqual((found, errors.count("\n")), ("", 1), errors)
                    self.assertIn(case[1], errors)
        self.assertEqual([each for each in self.services.signers if each != "base"], [])

    def test_the_token_of_a_login_is_renewed(self):
        settings = "sso_account_id = 1\nsso_role_name = r\nsso_session = renewable\n"
        for _ in range(2):
            self.assert_identity("sso", (self.sources("well")["sso"][0], settings, ""))
        self.assertEqual(self.services.requests["well", "sso-token"], 1)
        renewed = json.loads(self.renewable.read_text())
        self.assertEqual((renewed["clientSecret"], renewed["refreshToken"], self.renewable.stat().st_mode & 0o777), ("client-secret", "next", 0o600))
        self.assertEqual(len(list(self.cache.iterdir())), 4)

    def test_credentials_that_are_valid_outlive_a_failed_renewal(self):
        found, errors = self.search(self.sources("once")["container"], arguments=["s3://long/*"])
        self.assertEqual((found.count("container1\n"), errors), (10, ""))

    def test_credentials_that_the_store_rejects_are_renewed(self):
        found, errors = self.search(self.sources("revoke")["container"])
        self.assertEqual((found, errors, self.services.expired), ("s3://b/0-container2\n", "", 1))

    def test_a_command_gets_a_clean_start_and_ends_with_the_search(self):
        script = "grep 'Sig[BI]' /proc/self/status >&2; ls /proc/self/fd >&2; exit 3"
        _, errors = self.search(({}, f"credential_process = {script}\n", ""), close_fds=False,
                                preexec_fn=functools.partial(signal.signal, signal.SIGUSR1, signal.SIG_IGN))
        self.assertRegex(errors, r"^SigBlk:\s+0+\nSigIgn:\s+0+[01][08]0{7}\n0\n1\n2\n3\nkglob: .*ended with status 3.*\n$")
        note = self.home / "note"
        with self.start(({}, f"credential_process = echo $$ > {note}; exec sleep 60\n", "")) as run:
            while not note.exists() or not note.read_text().endswith("\n"):
                time.sleep(0.01)
            begin = time.monotonic()
            run.send_signal(signal.SIGINT)
            self.assertEqual((run.communicate()[0], run.returncode), ("", -signal.SIGINT))
            self.assertLess(time.monotonic() - begin, 0.5)
        self.assertFalse(Path("/proc", note.read_text().strip()).exists())


if __name__ == "__main__":
    KGLOB = sys.argv.pop(1)
    unittest.main()
